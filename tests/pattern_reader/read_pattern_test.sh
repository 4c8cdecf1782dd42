#!/usr/bin/env bash
# Tests the command line of read_pattern: what it prints, which files it writes, and its exit codes.
#   read_pattern_test.sh READ_PATTERN PICTURE
# PICTURE must show one pattern, and its kind must be "tile".
set -euo pipefail
read_pattern=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp "$2" "$folder/a.png"
cp "$2" "$folder/b.png"
cd "$folder"

fail() { echo "FAILED: $*" >&2; exit 1; }

# ends CODE ARGUMENT...: runs read_pattern, writes its output to the files out and err, and checks its exit code.
ends() {
  local expected=$1 code=0
  shift
  "$read_pattern" "$@" >out 2>err || code=$?
  [ "$code" = "$expected" ] || fail "read_pattern $* ended with $code instead of $expected: $(cat err)"
}
# says FILE EXPRESSION: checks that a line of the file matches the regular expression.
says() { grep -q -- "$2" "$1" || fail "no \"$2\" in: $(cat "$1")"; }

ends 0 --help
says out 'read_pattern --board 9x6'
ends 0 --version
ends 2
ends 2 --unknown a.png
ends 2 --board 9 a.png
ends 2 --square 25 a.png
ends 2 --pattern a.png a.png
says err '"a.png" does not describe a pattern'

# refuses KIND SIZE REASON: checks that a pattern file with this kind and size is refused with this reason.
refuses() {
  local pattern='"Kind":"'$1'","LatticeSize":'$2',"LatticePitch":10,"Code":null,"Points":[[0,0,0,0],[1,0,10,0]]'
  echo '{"Format":"LmLib64Pattern","Version":1,"Patterns":[{'"$pattern"'}]}' >pattern.json
  ends 2 --pattern pattern.json a.png
  says err "$3"
}
refuses MarkGrid '[2,1]' 'its kind "MarkGrid" is not known'
refuses RoundMarks '[2,1]' 'its round marks are not 7 x 7'

ends 1 a.png absent.png
says err 'read_pattern: The file "absent.png" cannot be opened.'
says out '"error": "The file '
says out '"kind": "tile"'
says out '"object": \['

ends 0 --lines --jobs 2 a.png b.png a.png
[ "$(grep -c '^{"file":"[ab].png",.*"kind":"tile".*}$' out)" = 3 ] ||
  fail "the output is not one line for each of the three pictures: $(cat out)"

ends 0 --draw drawn.png a.png
cmp -s drawn.png a.png && fail "nothing was drawn"
ln -s a.png link.png
for output in a.png ./a.png link.png; do
  ends 2 --draw "$output" a.png
  says err 'would replace the picture'
done
cmp -s a.png b.png || fail "the picture was changed"
ends 1 --draw absent/drawn.png a.png
says err 'The drawing "absent/drawn.png" cannot be written.'
says out '"kind": "tile"'

code=0
"$read_pattern" a.png >/dev/full 2>err || code=$?
[ "$code" = 1 ] || fail "read_pattern with a full standard output ended with $code"
says err 'Standard output cannot be written.'
