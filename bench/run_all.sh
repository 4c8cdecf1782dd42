#!/usr/bin/env bash
# run_all.sh BUILD_FOLDER: prints the tables of library_bench, window_bench, reader_time_bench and start_bench. Fails if
# a ratio is more than twice its bound, or if a benchmark does not run to its end.
set -uo pipefail
folder=$1/bench
export QT_QPA_PLATFORM=offscreen
echo "$(grep -m 1 'model name' /proc/cpuinfo | sed 's/.*: //'), $(nproc) cores, $(. /etc/os-release && echo "$PRETTY_NAME")"
failed=0
# With these settings, malloc never returns a picture's memory to the system between two previews. Without them, chance
# decides whether it does so, and returning the memory takes as long as drawing a small preview.
MALLOC_MMAP_THRESHOLD_=33554432 MALLOC_TRIM_THRESHOLD_=1000000000 "$folder/library_bench" 2>/dev/null || failed=1
for bench in window_bench reader_time_bench; do
  "$folder/$bench" 2>/dev/null || failed=1
done
# The time to start includes the work of the X server, so this benchmark runs with one. The others draw into memory.
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1600x1000x24" "$folder/start_bench" 2>/dev/null || failed=1
exit $failed
