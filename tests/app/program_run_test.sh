#!/usr/bin/env bash
# Runs the real program, unchanged, on the scripted library and uses the program with the keyboard. The program starts
# the viewer, saves, does not load OpenGL, finalises the library when the window is closed, and exits with 0. If
# finalising the library or building the window fails, the program is aborted.
#   with_desktop.sh program_run_test.sh <program> <folder of the scripted library>
set -u
program=$1
scripted_folder=$2
folder=$(mktemp -d)
failures=0
trap 'rm -rf "$folder"' EXIT

export XDG_RUNTIME_DIR=$folder
# A plugin that is unloaded at exit leaks memory. Its code is gone when the leaks are reported, so they cannot be
# suppressed by name. The other tests detect the program's own leaks.
export ASAN_OPTIONS=${ASAN_OPTIONS:-}:detect_leaks=0
check() {  # check <what> <actual> <expected>
  if [ "$2" != "$3" ]; then
    printf 'FAIL: %s\n  actual:   %s\n  expected: %s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
  fi
}

# Starts the program with a script, within a time limit. Leaves the process number of `timeout`, which sets the limit,
# in $pid.
start_program() {  # start_program <script JSON>
  printf '%s' "$1" >"$folder/script"
  rm -f "$folder/calls" "$folder/error"
  # QT_XCB_GL_INTEGRATION, which ctest sets, is removed, because the program itself must set it.
  env -u QT_XCB_GL_INTEGRATION LD_LIBRARY_PATH="$scripted_folder" \
    LMLIB64_SCRIPT="$folder/script" LMLIB64_RECORD="$folder/calls" \
    timeout -s KILL 100 "$program" 2>"$folder/error" &
  pid=$!
}

# Repeats a command until it succeeds or the program ends, but at most 100 times: half a minute if the command is quick.
wait_until() {  # wait_until <command>
  for _ in $(seq 100); do
    eval "$1" && return
    kill -0 $pid 2>/dev/null || return 1
    sleep 0.3
  done
}

# Makes a window the active one and presses keys in it.
press() {  # press <title> <keys>
  local window title=$1
  shift
  wait_until "window=\$(xdotool search --onlyvisible --limit 1 --name '^$title\$' 2>/dev/null); [ -n \"\$window\" ]"
  timeout 20 xdotool windowactivate --sync "$window" key --delay 50 "$@" 2>/dev/null
}

# Closes the program and leaves the exit code in $code. Closing is repeated until the program ends, because a window
# that is not ready yet ignores keys.
close_program() {
  wait_until 'timeout 5 xdotool search --onlyvisible --limit 1 --name "^Generate Calibration Pattern\$" \
    windowactivate --sync key alt+F4 >/dev/null 2>&1; ! kill -0 $pid 2>/dev/null'
  wait $pid 2>/dev/null
  code=$?
}

main='Generate Calibration Pattern'
called() { grep -qxF "$1" "$folder/calls" 2>/dev/null; }

printf '#!/bin/sh\necho "$*, ${QT_XCB_GL_INTEGRATION-own choice}" >%s/viewer.seen\n' "$folder" >"$folder/viewer"
chmod +x "$folder/viewer"
start_program "{\"nodes\": {\"/Path/Application/LmView\": \"$folder/viewer\"}}"
wait_until 'called "lmLibGetString /Path/Manual [no result]"'
press "$main" Tab space
wait_until '[ -s "$folder/viewer.seen" ]'
check 'arguments and OpenGL of the viewer' "$(cat "$folder/viewer.seen")" '--caltab-calibration, own choice'
loaded=$(cat "/proc/$(pgrep -P $pid)/maps")
check 'X11 plugin in use' "$(grep -c 'libqxcb\.so' <<<"$loaded" | sed 's/^[1-9].*/some/')" some
check 'OpenGL driver in use' "$(grep -c 'libGLX_' <<<"$loaded")" 0
press "$main" shift+Tab space
wait_until 'xdotool search --onlyvisible --name "^Save pattern\.\.\.\$" >/dev/null 2>&1'
xdotool type --delay 20 "$folder/target"
press 'Save pattern\.\.\.' Return
wait_until 'called "lmLibErase /Execute/3"'
check 'file name' "$(grep Filename "$folder/calls")" \
  "lmLibSetString /Execute/3/Parameters/Filename $folder/target.pdf"
close_program
check 'exit code' "$code" 0
check 'last call' "$(tail -n 1 "$folder/calls")" lmLibFinalize
check 'number of finalisations' "$(grep -c lmLibFinalize "$folder/calls")" 1
check 'commands' "$(grep -o 'Command G.*' "$folder/calls" | tr '\n' ' ')" \
  'Command GetModelInfo Command GenerateCalibrationPattern Command GenerateCalibrationPattern '
# The dialog may ask for the position of its window frame just after the window manager has removed the frame. The
# resulting error BadWindow is ignored.
check 'error stream' "$(grep -v BadWindow "$folder/error")" ''

aborted=$((128 + 6))
start_program '{"codes": {"lmLibFinalize": 7}}'
close_program
check 'exit code when finalising fails' "$code" $aborted
check 'uncaught exceptions when finalising fails' "$(grep -c "instance of 'LmLibException'" "$folder/error")" 1
check 'last call when finalising fails' "$(tail -n 1 "$folder/calls")" \
  'lmLibWriteDebugMessage LmLibException InternalError at  [no result]'

start_program '{"commands": {"GetModelInfo": {"ErrorSymbol": "NoPlates"}}}'
wait $pid 2>/dev/null
check 'exit code without a catalogue' "$?" $aborted
check 'no finalisation without a catalogue' "$(grep -c lmLibFinalize "$folder/calls")" 0

exit $((failures != 0))
