#!/usr/bin/env bash
# Runs draw_pattern for Windows under wine, and compares it with draw_pattern for this system: both must write the same
# bytes. Also tests those promises of file_writing/safe_file.h that can be tested under wine.
#   draw_pattern_test.sh WINE_RUN WINDOWS_PROGRAM PROGRAM
set -u
run=$1 windows=$2 linux=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
. "$(dirname "$0")/cases.sh"
not() { ! "$@"; }

draw() { "$run" "$windows" "$@"; }

# Compares every kind of pattern in every format, and the texts that --list and --version print.
kinds=(
  "official --plate Plate12"
  "custom --grid-spacing 12 --thickness 2 --inverted"
  "flexible --size 15x9 --grid-spacing 25 --offset 25,-37.5"
  "assembly --patterns 3 --grid-spacing 12"
  "halcon --grid-spacing 7.5 --plain"
)
for kind in "${kinds[@]}"; do
  name=${kind%% *}
  mkdir -p "$folder/windows" "$folder/linux"
  read -ra arguments <<<"$kind"
  for ending in pdf json svg png dxf; do arguments+=(-o "$name.$ending"); done
  (cd "$folder/windows" && draw "${arguments[@]}") || failures=$((failures + 1))
  (cd "$folder/linux" && "$linux" "${arguments[@]}") || failures=$((failures + 1))
done
expect "the same files" diff -r "$folder/windows" "$folder/linux"
expect "the number of files" test "$(find "$folder/windows" -type f | wc -l)" -ge 25
expect "the same list" cmp <(draw --list) <("$linux" --list)
expect "the same version" cmp <(draw --version) <("$linux" --version)

# The folder's name has a blank and characters that no 8-bit code page has together. Its path has more than 260
# characters.
long="$folder/$(printf 'x%.0s' {1..120})/$(printf 'y%.0s' {1..120})/日本語 Größe"
mkdir -p "$long"
save() { draw custom --grid-spacing 12 --thickness 2 -o "$1" 2>"$folder/said"; }
expect "writes a file with a long path in several writing systems" save "$long/図 Ω.pdf"
expect "the file with the long path is not empty" test -s "$long/図 Ω.pdf"
expect "no other file is beside the file with the long path" test "$(find "$long" -type f | wc -l)" -eq 1

# Tests replacing a file, refusing names that cannot be written, and cleaning up.
target=$folder/target.pdf
echo old >"$target"
echo left >"$folder/.lmlib64-999999-7.tmp"
echo left >"$folder/.lmlib64-999999-8.tmp"
echo mine >"$folder/.lmlib64-notes.tmp"
touch -d '1 hour ago' "$folder/.lmlib64-999999-7.tmp" "$folder/.lmlib64-notes.tmp"
expect "replaces a file" save "$target"
expect "the replaced file has the new content" cmp "$target" "$long/図 Ω.pdf"
expect "removes what a killed process left" test ! -e "$folder/.lmlib64-999999-7.tmp"
expect "keeps a recent temporary file" test -e "$folder/.lmlib64-999999-8.tmp"
expect "keeps an old file with a similar name" test -e "$folder/.lmlib64-notes.tmp"
mkdir "$folder/folder.pdf"
echo old >"$folder/protected.pdf"
chmod a-w "$folder/protected.pdf"
for name in "$folder/folder.pdf" "$folder/protected.pdf" "$folder/missing/図.pdf" "$folder/NUL.pdf"; do
  expect "refuses $name" not save "$name"
  expect "the message names $name" grep -qF "$name" "$folder/said"
done
expect "keeps the protected file" grep -qx old "$folder/protected.pdf"
expect "leaves no temporary file of its own" test "$(find "$folder" -maxdepth 1 -name '.lmlib64-*' | wc -l)" -eq 2

report_cases
