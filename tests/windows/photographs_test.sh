#!/usr/bin/env bash
# Runs read_pattern and calibrate_cameras for Windows, under wine, on the example photographs and on a list of corners,
# and compares them with the same programs of this system. All paths that the programs get contain characters outside
# ASCII. The programs of both systems must write the same JSON documents and the same drawing. The documents' numbers
# may differ in the last digits, because the C libraries round the results of functions such as sin differently; the
# largest differences are printed.
#   photographs_test.sh WINE_RUN WINDOWS_BIN BIN
set -euo pipefail
run=$1 windows=$2 linux=$3
here=$(dirname "$(realpath "$0")")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/写真 Größe"
cd "$folder/写真 Größe"
for file in "$here"/../../viewer/example/*.jpg; do cp "$file" "写真-${file##*-}"; done

# Writes the list of corners: the positions of the 9 x 6 corners of a board in 12 pictures that a camera with a
# focal length of 900 pixels takes.
awk 'BEGIN { for (k = 1; k <= 12; k++) for (row = 0; row < 6; row++) for (column = 0; column < 9; column++) {
  a = 0.5 * cos(k * 2.4); b = 0.5 * sin(k * 2.4); s = 25 * column - 100; t = 25 * row - 60
  w = sin(a) * t; y = cos(a) * t; x = cos(b) * s + sin(b) * w; w = cos(b) * w - sin(b) * s + 450
  noise = ((31 * k + row * row + 11 * column) % 101 - 50) / 1000
  printf "写真-%02d.jpg %.4f %.4f 0\n", k, 900 * (x + 40 * cos(k)) / w + 720 + noise, 900 * y / w + 540 - noise
} }' >"$folder/隅 Ω.txt"

# use SYSTEM: runs the programs of one system and writes their documents to the folder SYSTEM. Some of the paths begin
# with "/", to check that the programs for Windows do not mistake such a path for an option.
use() {
  local out=$folder/$1
  mkdir "$out"
  program read_pattern --jobs 2 写真-*.jpg >"$out/readings.json"
  program read_pattern --draw "$out/図 ü.png" "$PWD/写真-01.jpg" >"$out/reading.json"
  program calibrate_cameras --quiet --out "$out/結果 Ω" --report "$out/報告 é.html" --camera 'left=../写真 Größe/写真-*.jpg'
  program calibrate_cameras --quiet --out "$out/隅 Ω" --corners "$folder/隅 Ω.txt" --camera 'left=写真-*' --board 9x6 \
    --square 25 --model pinhole4
  (cd "$out" && find . -type f | LC_ALL=C sort) >"$folder/$1.txt"
}
program() { "$run" "$windows/$1.exe" "${@:2}"; }
use windows
program() { "$linux/$1" "${@:2}"; }
use linux
diff "$folder/linux.txt" "$folder/windows.txt"
cd "$folder"
compare -metric AE "linux/図 ü.png" "windows/図 ü.png" null: || { echo "FAILED: the drawings differ" >&2; exit 1; }
for file in reading readings; do "$here/same_json.py" 1e-9 {windows,linux}/$file.json; done
for file in {結果,隅}" Ω"/{calibration,assembly}.json; do
  "$here/same_json.py" 1e-6 "windows/$file" "linux/$file"
done
! grep -rlI $'\r' windows
