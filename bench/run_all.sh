#!/usr/bin/env bash
# Prints the tables of all benchmarks: run_all.sh BUILD_FOLDER. Fails where a ratio is over twice its bound.
set -uo pipefail
folder=$1/bench
export QT_QPA_PLATFORM=offscreen
echo "$(grep -m 1 'model name' /proc/cpuinfo | sed 's/.*: //'), $(nproc) cores, $(. /etc/os-release && echo "$PRETTY_NAME")"
failed=0
for bench in library_bench window_bench reader_time_bench; do
  "$folder/$bench" 2>/dev/null || failed=1
done
# What a start costs depends on the desktop, so that one gets a real one.
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1600x1000x24" "$folder/start_bench" 2>/dev/null || failed=1
exit $failed
