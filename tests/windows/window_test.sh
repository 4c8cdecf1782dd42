#!/usr/bin/env bash
# Uses LmCalTab and LmView for Windows in real windows under wine, with the mouse and the keyboard. The programs, the
# photographs and the saved files are in folders whose names mix writing systems.
# - In LmCalTab, the test changes a value on every page and saves every page in every format. The files must be
#   identical to those that draw_pattern makes on this Linux system.
# - The test starts LmView with LmCalTab's button, drops the example photographs on LmView, and saves the results. The
#   results must agree with those of calibrate_cameras on this Linux system.
#   window_test.sh FOLDER_OF_PACKAGES BUILD [FOLDER_FOR_PICTURES]
# BUILD is the folder of a build for this system that contains draw_pattern, calibrate_cameras and drop_files. The test
# needs a desktop of its own (tests/with_desktop.sh), wine and xclip.
set -u
build=$(realpath "$2") pictures=${3:-}
. "$(dirname "$0")/unpacked_zip.sh" "$1"
target="$folder/日本語 Größe"
mkdir "$target"

picture() { [ -z "$pictures" ] || import -window root "$pictures/$1.png"; }
fail() {
  echo "FAILED: $*" >&2
  picture failure
  xdotool search --onlyvisible --name . getwindowname %@ >&2
  exit 1
}
window_named() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -1; }
is_there() { [ -n "$(window_named "$1")" ]; }
is_gone() { ! is_there "$1"; }
# activate TITLE: waits for the window, makes it the active one, and sets `window` to its number.
activate() {
  is_soon is_there "$1" || fail "no window \"$1\""
  window=$(window_named "$1")
  xdotool windowactivate --sync "$window"
  sleep 0.3
}
keys() { xdotool key --delay 40 "$@"; }
# until_window CONDITION TITLE COMMAND...: repeats the command until the condition holds for the window with this title.
# A window that has just been shown may miss a key or a click.
until_window() {
  local condition=$1 title=$2 i
  for _ in $(seq 30); do
    "${@:3}"
    for i in $(seq 10); do "$condition" "$title" && return; sleep 0.2; done
  done
  fail "\"$title\": still not $condition after: ${*:3}"
}
# enter TEXT: replaces the text of the active field. The text is pasted, because under wine xdotool cannot type the
# characters of every writing system.
enter() {
  printf '%s' "$1" | xclip -selection clipboard -in >/dev/null 2>&1
  sleep 0.3
  keys ctrl+a ctrl+v
}
click() { xdotool mousemove --window "$window" "$1" "$2" click 1; }

# save NAME: saves the page with the window's first button.
save() {
  activate "Generate Calibration Pattern"
  until_window is_there "Save pattern..." click 60 25
  activate "Save pattern..."
  enter "Z:$target/$1"
  until_window is_gone "Save pattern..." keys Return
}

(cd "$folder" && exec "$run" "$tree/bin/LmCalTab.exe") 2>"$folder/said" &
program=$!
activate "Generate Calibration Pattern"
sleep 2

# Two presses of the Tab key lead from the first button to the tabs. One more press leads to the first field of the
# page.
pages=(official custom flexible assembly halcon)
changes=("Down" "Down" "ctrl+a 2 1 Tab ctrl+a 9" "Down Tab ctrl+a 3" "ctrl+a 8 0 Tab")
for page in "${!pages[@]}"; do
  name=${pages[page]}
  activate "Generate Calibration Pattern"
  keys Tab Tab
  [ "$page" = 0 ] || keys Right
  keys Tab
  read -ra change <<<"${changes[page]}"
  keys "${change[@]}"
  sleep 1
  picture "$name"
  for ending in json pdf svg png dxf; do save "$name.$ending"; done
  [ "$name" != custom ] || save "bare $name" # a PDF
done
mkdir "$folder/linux"
for name in "${pages[@]}"; do
  for ending in json pdf svg png dxf; do
    "$build/bin/draw_pattern" --from "$target/$name.json" -o "$folder/linux/$name.$ending" ||
      fail "$name.json is not drawn again"
  done
done
cp "$folder/linux/custom.pdf" "$folder/linux/bare custom.pdf"
diff -r "$folder/linux" "$target" || fail "the saved files differ from those that draw_pattern makes on this system"
# Each changed value is in the file.
has() { tr -d ' \n' <"$target/$1.json" | grep -qF "$2" || fail "$1.json does not have $2"; }
has official '"Type":"Plate64"'
has custom '"GridSpacing":16'
has flexible '"GridSize":[21,9]'
[ "$(grep -c '"AssemblyPattern": [0-2],' "$target/assembly.json")" -eq 3 ] || fail "not three patterns in assembly.json"
has halcon '"GridSpacing":10'
echo "LmCalTab: $(find "$target" -type f | wc -l) files, all identical to those of draw_pattern on this system"

# The second button starts LmView. Another program then drags photographs into LmView's window.
photographs="$folder/写真 Größe" results="$folder/結果 Größe"
mkdir "$results"
cp -r "$source/viewer/example" "$photographs"
(cd "$photographs" && "$build/bin/calibrate_cameras" --quiet --out "$folder/linux results" photograph-*.jpg) ||
  fail "calibrate_cameras failed"
activate "Generate Calibration Pattern"
click 190 25
activate "LmView"
xprop -id "$window" -f _NET_WM_ICON 32c _NET_WM_ICON | grep -q '= [0-9]' || fail "LmView's title has no icon"
eval "$(xdotool getwindowgeometry --shell "$window")"
"$build/tests/drop_files" $((X + WIDTH / 2)) $((Y + HEIGHT / 2)) "$photographs"/*.jpg 2>/dev/null ||
  fail "LmView takes no photographs"

# save_results: calibrates anew and saves the results. LmView may show a result before it has read all photographs, and
# each later result starts from the one before, which changes its last digits. With F5, the result is the same every
# time. The dialog that asks for the folder is wine's own. Its title is "Select Folder", whatever title LmView sets, and
# it accepts only "\" between the folders of a path.
save_results() {
  activate "LmView"
  keys F5
  sleep 3
  until_window is_there "Select Folder" keys ctrl+r
  activate "Select Folder"
  enter "Z:${results//\//\\}"
  until_window is_gone "Select Folder" keys Return
  activate "Save Results"
  until_window is_gone "Save Results" keys Return
}
# are_same: succeeds if LmView's results agree with those of calibrate_cameras. The name of the program and the folder
# of the photographs may differ.
are_same() {
  local file
  for file in calibration assembly; do
    sed -E 's|"Z:[^"]*/|"|; s/"LmView /"calibrate_cameras /' "$results/$file.json" >"$folder/$file.json"
    "$source/tests/windows/same_json.py" 1e-6 "$folder/$file.json" "$folder/linux results/$file.json" || return
  done
}
for _ in $(seq 20); do
  save_results
  are_same >"$folder/compared" 2>&1 && break
done
picture lmview
are_same || fail "LmView's results differ from those of calibrate_cameras on this system"
echo "LmView: the results agree with those of calibrate_cameras on this system"
activate "LmView"
until_window is_gone "LmView" keys ctrl+q

activate "Generate Calibration Pattern"
keys alt+F4
wait "$program"
code=$?
[ "$code" -eq 0 ] || fail "LmCalTab ended with $code: $(cat "$folder/said")"

# LmView must end with 0, too. The test cannot get the exit code of the LmView process that LmCalTab started, so it
# starts LmView once more by itself.
(cd "$folder" && exec "$run" "$tree/bin/LmView.exe") 2>/dev/null &
viewer=$!
activate "LmView"
until_window is_gone "LmView" keys ctrl+q
wait "$viewer" || fail "LmView ended with $?"
