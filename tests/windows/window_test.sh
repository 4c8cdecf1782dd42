#!/usr/bin/env bash
# Uses LmCalTab for Windows in a real window under wine, with the mouse and the keyboard. It changes a value on every
# page, saves every page in every format into a folder whose name mixes writing systems, and closes the window. The
# files must be identical to those that draw_pattern makes on this Linux system.
#   window_test.sh FOLDER_OF_PACKAGES BUILD [FOLDER_FOR_PICTURES]
# BUILD is the folder of a build for this system that contains bin/draw_pattern. The test needs a desktop of its own
# (tests/with_desktop.sh), wine and xclip.
set -u
packages=$(realpath "$1") build=$(realpath "$2") pictures=${3:-}
source=$(realpath "$(dirname "$0")/../..")
run=$source/packaging/windows/wine_run
folder=$(mktemp -d)
export WINEPREFIX=$folder/wine
unset LMCALTAB_DLL_FOLDERS QT_QPA_PLATFORM
trap '/usr/lib/wine/wineserver64 -k 2>/dev/null; wait; rm -rf "$folder"' EXIT
target="$folder/日本語 Größe"
mkdir "$target" "$folder/Prüf 図"
unzip -q "$packages"/LmCalTab-*-win64.zip -d "$folder/Prüf 図"
tree=$(echo "$folder/Prüf 図"/LmCalTab-*-win64)

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
# is_soon COMMAND...: waits until the command succeeds, but at most a minute.
is_soon() {
  for _ in $(seq 240); do "$@" && return; sleep 0.25; done
  return 1
}
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
# enter TEXT: replaces the text of the active field. Under wine, xdotool can type the characters of some writing systems
# only.
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

"$run" wineboot -i 2>/dev/null
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
diff -r "$folder/linux" "$target" || fail "not the files of this system"
# Each changed value is in the file.
has() { tr -d ' \n' <"$target/$1.json" | grep -qF "$2" || fail "$1.json does not have $2"; }
has official '"Type":"Plate64"'
has custom '"GridSpacing":16'
has flexible '"GridSize":[21,9]'
[ "$(grep -c '"AssemblyPattern": [0-2],' "$target/assembly.json")" -eq 3 ] || fail "not three patterns in assembly.json"
has halcon '"GridSpacing":10'
echo "LmCalTab: $(find "$target" -type f | wc -l) files, all as on this system"

activate "Generate Calibration Pattern"
keys alt+F4
wait "$program"
code=$?
[ "$code" -eq 0 ] || fail "LmCalTab ended with $code: $(cat "$folder/said")"
