#!/usr/bin/env bash
# Runs the real program, unchanged, on the scripted library: when its user closes it, it finalises the library and
# exits with 0; if finalising the library or building the window fails, it is aborted.
#   program_run_test.sh <program> <folder of the scripted library>
set -u
program=$1
scripted_folder=$2
folder=$(mktemp -d)
failures=0
trap 'kill $server $manager 2>/dev/null; wait 2>/dev/null; rm -rf "$folder"' EXIT

export XDG_RUNTIME_DIR=$folder QT_QPA_PLATFORM=xcb
# A plugin that is unloaded at exit leaks memory, and as its code is gone by then, these leaks cannot be suppressed by
# name. The other tests detect the program's own leaks.
export ASAN_OPTIONS=${ASAN_OPTIONS:-}:detect_leaks=0
# -noreset, because the server would otherwise reset when its last client leaves, while the next one may be connecting.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>"$folder/display" 2>/dev/null &
server=$!
for _ in $(seq 100); do [ -s "$folder/display" ] && break; sleep 0.1; done
DISPLAY=:$(cat "$folder/display")
export DISPLAY
openbox >/dev/null 2>&1 &
manager=$!
for _ in $(seq 300); do
  xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
  sleep 0.1
done

check() {  # check <what> <actual> <expected>
  if [ "$2" != "$3" ]; then
    printf 'FAIL: %s\n  actual:   %s\n  expected: %s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
  fi
}

# Starts the program with a script, closes its window if one is expected, and leaves the exit code in $code.
run_program() {  # run_program <script JSON> <close|no window>
  printf '%s' "$1" >"$folder/script"
  rm -f "$folder/calls" "$folder/error"
  LD_LIBRARY_PATH=$scripted_folder LMLIB64_SCRIPT=$folder/script LMLIB64_RECORD=$folder/calls \
    timeout -s KILL 60 "$program" 2>"$folder/error" &
  local pid=$!
  if [ "$2" = close ]; then
    # Closing is repeated until the program ends, because a window that is not ready yet ignores keys.
    local window
    for _ in $(seq 100); do
      kill -0 $pid 2>/dev/null || break
      window=$(xdotool search --onlyvisible --limit 1 --name '^Generate Calibration Pattern$' 2>/dev/null)
      [ -z "$window" ] || timeout 5 xdotool windowactivate --sync "$window" key alt+F4 2>/dev/null
      sleep 0.3
    done
  fi
  wait $pid 2>/dev/null
  code=$?
}

run_program '{}' close
check 'exit code' "$code" 0
check 'last call' "$(tail -n 1 "$folder/calls")" lmLibFinalize
check 'number of finalisations' "$(grep -c lmLibFinalize "$folder/calls")" 1
check 'commands' "$(grep -o 'Command G.*' "$folder/calls" | tr '\n' ' ')" \
  'Command GetModelInfo Command GenerateCalibrationPattern '
check 'error stream' "$(cat "$folder/error")" ''

aborted=$((128 + 6))
run_program '{"results": [{"function": "lmLibFinalize", "code": 7}]}' close
check 'exit code when finalising fails' "$code" $aborted
check 'uncaught when finalising fails' "$(grep -c "instance of 'LmLibException'" "$folder/error")" 1
check 'last call when finalising fails' "$(tail -n 1 "$folder/calls")" \
  'lmLibWriteDebugMessage LmLibException InternalError at  [no result]'

run_program '{"commands": {"GetModelInfo": {"errorSymbol": "NoPlates", "errorText": "No plates."}}}' 'no window'
check 'exit code without a catalogue' "$code" $aborted
check 'no finalisation without a catalogue' "$(grep -c lmLibFinalize "$folder/calls")" 0

exit $((failures != 0))
