#!/usr/bin/env bash
# Tests the command line of calibrate_cameras: the files that it makes from photographs and from corner lists, and its
# messages about bad input.
#   calibrate_cameras_test.sh CALIBRATE_CAMERAS PICTURE
# PICTURE is one of the manual's pictures. It shows a pattern with its middle at (652, 336). ImageMagick makes
# photographs of this pattern. The picture assembly.png in the same folder shows another pattern.
set -euo pipefail
calibrate_cameras=$1
folder=$(mktemp -d)
trap 'chmod -R u+w "$folder"; rm -rf "$folder"' EXIT
cp "$2" "$folder/whole.png"
cp "$(dirname "$2")/assembly.png" "$folder/other.png"
cd "$folder"

fail() { echo "FAILED: $*" >&2; exit 1; }

# ends CODE ARGUMENT...: runs the program with its output in the files out and err, and compares its exit code.
ends() {
  local expected=$1 code=0
  shift
  "$calibrate_cameras" "$@" >out 2>err || code=$?
  [ "$code" = "$expected" ] || fail "calibrate_cameras $* ended with $code instead of $expected: $(cat err)"
}
says() { grep -q -- "$2" "$1" || fail "no \"$2\" in: $(cat "$1")"; }
# nothing_in FOLDER: checks that a failed run left no result in the folder.
nothing_in() { [ ! -e "$1" ] || [ -z "$(ls -A "$1")" ] || fail "$1 has: $(ls -A "$1")"; }
# is_near FILE NUMBER SHARE: every focal length in the file differs from the number by at most this share.
is_near() {
  awk -v true="$2" -v share="$3" -F '[][,]' '/"FocalLength"/ { if (($2/true - 1)^2 > share^2) bad = 1; n++ }
    END { exit bad || !n }' "$1" || fail "another focal length than $2: $(grep FocalLength "$1")"
}

# views COUNT TILT: prints one line for each view of a square. The square has sides of 380 pixels and is tilted by TILT
# radians. The camera has a focal length of 700 pixels. A line has each corner of the square and the pixel at which the
# camera sees that corner.
views() {
  awk -v count="$1" -v tilt="$2" 'BEGIN { side = 380; f = 700; h = side / 2
    for (k = 0; k < count; k++) {
      a = tilt * cos(k * 2.4); b = tilt * sin(k * 2.4); c = 0.3 * sin(k * 1.3)
      z = f * (1 + 0.2 * cos(k)); right = 110 * cos(k * 1.7); down = 70 * sin(k * 1.7)
      for (i = 0; i < 4; i++) {
        s = (i % 2) * side - h; t = (i > 1) * side - h
        x = cos(c) * s - sin(c) * t; y = sin(c) * s + cos(c) * t
        w = sin(a) * y; y = cos(a) * y; v = cos(b) * x + sin(b) * w; w = cos(b) * w - sin(b) * x
        printf "%d,%d %.4f,%.4f ", s + h, t + h, f * (v + right) / (w + z) + 400.5, f * (y + down) / (w + z) + 300.5
      }
      print ""
    } }'
}
# photographs NAME COUNT TILT: makes the photographs NAME0.png, NAME1.png and so on.
photographs() {
  local n=0 view
  views "$2" "$3" | while read -r view; do
    convert target.png -virtual-pixel edge -define distort:viewport=800x600 -distort Perspective "$view" "$1$n.png"
    n=$((n + 1))
  done
}
convert whole.png -crop 380x380+462+146 +repage -colorspace Gray target.png
photographs photo 8 0.6

# Photographs give result files. These files do not depend on the number of threads.
convert photo0.png -resize 50% scaled.png
convert -size 800x600 xc:gray50 empty.png
convert photo1.png photo1.jpg
head -c 9000 photo1.jpg >truncated.jpg
ends 0 --jobs 2 --out result --report report.html photo?.png scaled.png empty.png truncated.jpg absent.png
says err 'scaled.png: It has 400 x 300 pixels'
says err 'empty.png: No pattern was found in it.'
says err 'truncated.jpg: The file is cut off before the end of its picture.'
says err 'absent.png: The file "absent.png" cannot be opened.'
is_near result/calibration.json 700 0.002
says result/assembly.json '"Points": \['
says report.html '<svg'
says out '^Written to "result": calibration.json .*cameras.txt$'
says out '^Written to "report.html".$'
ends 0 --quiet --jobs 1 --out again photo?.png scaled.png empty.png truncated.jpg absent.png
{ [ ! -s out ] && ! grep calibrate_cameras err; } || fail "--quiet prints: $(cat out err)"
diff -r result again
ends 1 --out result-2 --quiet photo?.png --report /dev/null/report.html
nothing_in result-2

# A corner list gives result files, too. One of its corners was not seen.
awk 'BEGIN { print "# filename x y level"
  for (k = 0; k < 12; k++) for (row = 0; row < 6; row++) for (column = 0; column < 9; column++) {
    a = 0.5 * cos(k * 2.4); b = 0.5 * sin(k * 2.4); s = 25 * column - 100; t = 25 * row - 60
    w = sin(a) * t; y = cos(a) * t; x = cos(b) * s + sin(b) * w; w = cos(b) * w - sin(b) * s + 450
    seed = (seed * 7 + 31 * k + row + 11 * column) % 101; noise = (seed - 50) / 1000
    u = 900 * (x + 40 * cos(k)) / w + 500 + noise; v = 900 * (y + 30 * sin(k)) / w + 400 - noise
    print "view" k ".png", u, v, (k == 3 && row == 2 && column == 2 ? "-" : 0)
  } }' >corners.txt
ends 0 --corners corners.txt --board 9x6 --square 25 --image-size 1000x800 --model pinhole4 --measured 99.8x100 \
  --out listed
is_near listed/calibration.json 900 0.001
says out '12 photographs'
says listed/camchain.yaml 'distortion_model: radtan'
ends 2 --corners corners.txt --board 9x6 --square 25 --out none
says err 'give --image-size'

# Two cameras of a rig see the same board. The right camera is 80 mm to the right of the left one. One photograph was
# taken with another zoom. The check bars (see --measured) are 200 mm long in the drawing of this board. In the test
# above, they are 100 mm long in the drawing.
awk 'BEGIN { for (camera = 0; camera < 2; camera++) for (k = 0; k < 12; k++)
  for (row = 0; row < 6; row++) for (column = 0; column < 9; column++) {
    a = 0.5 * cos(k * 2.4); b = 0.5 * sin(k * 2.4); s = 25 * column - 100; t = 25 * row - 60
    w = sin(a) * t; y = cos(a) * t; x = cos(b) * s + sin(b) * w; w = cos(b) * w - sin(b) * s + 450
    seed = (seed * 7 + 31 * k + row + 11 * column) % 101; noise = (seed - 50) / 1000
    f = 900; if (camera == 1 && k == 5) f = 1200
    u = f * (x + 40 * cos(k) + 40 - 80 * camera) / w + 500 + noise; v = f * (y + 30 * sin(k)) / w + 400 - noise
    print (camera ? "right" : "left") k ".png", u, v
  } }' >rig.txt
ends 0 --rig --corners rig.txt --camera 'left=left*' --camera 'right=right*' --board 9x6 --square 25 \
  --image-size 1000x800 --model pinhole5 --measured 199.6x200 --axes 0:8:5 0:0:5 0:8:0 --out rig
is_near rig/calibration.json 900 0.001
says err 'right5.png: The photograph fits only a focal length that is 3[0-9] % longer'
says out 'left: pinhole5, focal length [89][0-9][0-9]\.[0-9]* x .* 12 photographs, 648 corners$'
says out '^All lengths rest on the measured size of'
says out '^left is not in camchain.yaml, because this file format has no lens model pinhole5\.$'
says rig/assembly.json 'defined by three corners'
# numbers_of KEY FILE NUMBER: prints the numbers in the brackets after occurrence NUMBER of the key, counted from 1.
numbers_of() { grep "\"$1\"" "$2" | sed -n "$3p" | tr -d '[]",' | cut -d: -f2; }
# The baseline would be 80 mm if the print had the size of the drawing. But the print is smaller: on average over x and
# y, lengths on the print are 0.999 times the lengths in the drawing.
numbers_of Translation rig/calibration.json 2 | awk '{ exit !(($1 + 80 * 0.999)^2 + $2^2 + $3^2 < 0.3) }' ||
  fail "the baseline is $(numbers_of Translation rig/calibration.json 2)"
numbers_of PrintScale rig/assembly.json 1 | awk '{ exit !(($1 * $2 - 0.998)^2 < 1e-10 && $1 < $2) }' ||
  fail "the print's scale is $(numbers_of PrintScale rig/assembly.json 1)"
ends 1 --corners corners.txt --board 9x6 --square 25 --image-size 1000x800 --measured 3=99.8x100 --out none
says err 'no photograph that is used shows pattern 3'
convert other.png -gravity center -background gray -extent 800x600 other.png
ends 1 --measured 99.8x100 --out none photo?.png other.png
says err 'there are several patterns'

# Photographs that determine no calibration are refused.
photographs same 3 0
ends 1 --out none empty.png
says err 'No photograph shows a pattern.'
ends 1 --out none photo0.png
says err 'Only one photograph shows a pattern'
ends 1 --out none same?.png
says err 'too few directions'
says err 'No calibration was written.'
nothing_in none

# Help is shown, and wrong arguments are refused.
ends 0 --help
says out 'calibrate_cameras --rig'
ends 2 photo0.png
says err '^calibrate_cameras: --out is required (see calibrate_cameras --help)$'
ends 2 --out none
says err 'No photographs were given'
ends 2 --out photo0.png photo1.png
says err 'is not a folder'
ends 2 --out none 'nothing*.png'
ends 2 --out none --camera 'a/b=photo?.png'
ends 2 --out none --measured 3=100 photo0.png
ends 2 --out none --measured 90x94 photo0.png
ends 2 --out none --model pinhole6 photo0.png
ends 2 --out none --board 9x6 photo0.png
ends 2 --out none --pattern photo0.png photo1.png
nothing_in none
