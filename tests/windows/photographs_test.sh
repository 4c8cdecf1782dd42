#!/usr/bin/env bash
# Runs read_pattern and calibrate_cameras for Windows, under wine, on the example photographs, and compares them with
# the same programs of this system. Both must write the same documents. The documents' numbers may differ in the last
# digits, because the C libraries round functions such as sin differently; the largest differences are printed.
#   photographs_test.sh WINE_RUN WINDOWS_BIN BIN
set -euo pipefail
run=$1 windows=$2 linux=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
place="$folder/写真 Größe"
mkdir "$place"
cp "$(dirname "$(realpath "$0")")"/../../viewer/example/*.jpg "$place"
cd "$place"

# same NAME BOUND FILE FILE: both JSON documents have the same structure and texts, and no pair of numbers differs by more
# than BOUND, absolutely or as a share of the larger one.
same() {
  python3 - "$@" <<'PYTHON'
import json, sys
name, bound, *files = sys.argv[1:]
largest = (0, '', 0, 0)
def compare(a, b, path):
    global largest
    if isinstance(a, dict) and isinstance(b, dict) and list(a) == list(b):
        for key in a: compare(a[key], b[key], f'{path}/{key}')
    elif isinstance(a, list) and isinstance(b, list) and len(a) == len(b):
        for i in range(len(a)): compare(a[i], b[i], f'{path}/{i}')
    elif type(a) in (int, float) and type(b) in (int, float):
        largest = max(largest, (abs(a - b) / max(1, abs(a), abs(b)), path, a, b))
    elif a != b:
        sys.exit(f'FAILED: {name}: {path} is {str(a)[:200]} and {str(b)[:200]}')
a, b = (json.load(open(file, encoding='utf-8')) for file in files)
compare(a, b, '')
print(f'{name}: largest difference {largest[0]:.2g}' + (f' ({largest[1]}: {largest[2]} and {largest[3]})' if largest[0] else ''))
if largest[0] > float(bound): sys.exit(f'FAILED: {name}: more than {bound}')
PYTHON
}

"$run" "$windows/read_pattern.exe" --jobs 2 photograph-*.jpg >"$folder/windows.json"
"$linux/read_pattern" --jobs 2 photograph-*.jpg >"$folder/linux.json"
same "read_pattern" 1e-9 "$folder/windows.json" "$folder/linux.json"

"$run" "$windows/calibrate_cameras.exe" --quiet --out windows photograph-*.jpg --report windows.html
"$linux/calibrate_cameras" --quiet --out linux photograph-*.jpg --report linux.html
cmp <(ls windows) <(ls linux)
for file in calibration assembly; do
  same "calibrate_cameras, $file.json" 1e-6 "windows/$file.json" "linux/$file.json"
done
! grep -l $'\r' windows/* windows.html
