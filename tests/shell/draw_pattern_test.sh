#!/usr/bin/env bash
# Tests the command line of draw_pattern: the library's parameters, the files, the messages and the exit codes.
#   draw_pattern_test.sh DRAW_PATTERN VERB
# If a folder is given where a file is needed, the message must end with "it cannot be VERB". VERB is "opened" on
# Windows and "read" elsewhere.
set -euo pipefail
draw_pattern=$1 verb=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

fail() { echo "FAILED: $*" >&2; exit 1; }

# ends CODE ARGUMENT...: runs draw_pattern, writes its output to the files out and err, and checks its exit code.
ends() {
  local expected=$1 code=0
  shift
  "$draw_pattern" "$@" >out 2>err </dev/null || code=$?
  [ "$code" = "$expected" ] || fail "draw_pattern $* ended with $code instead of $expected: $(cat err)"
}
# says FILE TEXT: checks that the file contains the text.
says() { grep -qF -- "$2" "$1" || fail "no '$2' in: $(cat "$1")"; }

# draws PARAMETERS ARGUMENT...: runs draw_pattern with the arguments and lets it write a JSON file and a PDF. In the
# JSON file, the parameters of the last pattern must contain the text PARAMETERS (compared without blanks and line
# ends). Drawing from the JSON file must give the same JSON file and the same PDF.
draws() {
  local parameters=$1
  shift
  ends 0 "$@" -o first.json -o first.pdf
  says <(tr -d ' \n' <first.json | sed 's/.*"Parameters":{\([^}]*\)}.*/\1/') "$parameters"
  ends 0 --from first.json -o again.json -o again.pdf
  cmp first.json again.json || fail "$*: drawing from the JSON file gives another JSON file"
  cmp first.pdf again.pdf || fail "$*: drawing from the JSON file gives another PDF"
}
draws '"Type":"Plate12","GridSpacing":12,"Thickness":2,"Polarity":true' official --plate Plate12
draws '"Type":"SingleCustom","GridSpacing":12.5,"Thickness":1.5,"Polarity":false' \
  custom --grid-spacing 12.5 --thickness 1.5 --inverted
draws '"Type":"Flexible","GridSize":[15,9],"GridSpacing":25,"Thickness":0,"Offset":[-12.5,37.5],"Polarity":true' \
  flexible --size 15x9 --grid-spacing 25 --offset -12.5,37.5
draws '"Type":"Assembly","AssemblyPattern":4,"GridSpacing":12,"Thickness":0,"Polarity":true' \
  assembly --patterns 5 --grid-spacing 12
[ "$(grep -c AssemblyPattern.:.[0-4], first.json)" = 5 ] || fail "the file does not list five patterns of an assembly"
draws '"GridSpacing":8,"Thickness":0,"Offset":[16,-8],"Polarity":true,"Encoding":true' \
  halcon --grid-spacing 8 --offset 16,-8
draws '"GridSpacing":8,"Thickness":0,"Polarity":true,"Encoding":true' \
  halcon --grid-spacing 8 --resolution 300 --print-scale 0.995,1.002
says <(tr -d ' \n' <first.json) '"Resolution":300,"PrintScale":[0.995,1.002]'
draws '"Type":"Flexible","GridSize":[15,9],"GridSpacing":60,' \
  flexible --size 15x9 --grid-spacing 60 --paper 200x287 --sheets
says <(tr -d ' \n' <first.json) '"Paper":[200,287],"Sheets":true'
draws '"GridSpacing":8,' halcon --grid-spacing 8 --paper Letter
draws '"GridSpacing":8.123456,"Thickness":2,"Polarity":true' halcon --grid-spacing 8.123456 --thickness 2 --plain
says first.json '"Encoding": false'

ends 0 --list
says out 'Plate96   96 mm         5 mm       768 mm x 768 mm, grid spacing 96 mm'
ends 0 --help-all
says out '--size CxR'
ends 0 --version

parameters='{"Filename":"named.json","Patterns":[{"GridSpacing":12}]}'
echo "$parameters" >parameters.json
ends 0 --json parameters.json
ends 0 --json parameters.json -o other.json
cmp named.json other.json || fail "-o changed the pattern"
"$draw_pattern" --json - -o piped.json <<<"$parameters"
cmp named.json piped.json || fail "parameters from standard input give another pattern"

# Twice the resolution gives twice as many pixels, give or take one because of rounding.
for dpi in 100 200; do
  ends 0 halcon --grid-spacing 25.4 --resolution $dpi -o $dpi.png
done
width() { od -An -tu4 --endian=big -j16 -N4 "$1" | tr -d ' '; }
[ $(((2 * $(width 100.png) - $(width 200.png)) / 2)) -eq 0 ] || fail "--resolution: $(width 100.png) and $(width 200.png) pixels"

# Options replace the values in the file, even if those have other types.
echo '{"Paper":"A4","PrintScale":"none","Patterns":[{"GridSpacing":12}]}' >typed.json
ends 0 --json typed.json --paper 200x287 --print-scale 0.99,1 -o replaced.json
says <(tr -d ' \n' <replaced.json) '"PrintScale":[0.99,1],"Paper":[200,287]'

# A wrong call gets a message that names the mistake, and writes nothing.
printf '{"Patterns":[{"GridSpacing":12}]}\0{}' >zero.json
sed 's/"Version": 1/"Version": 2/' first.json >version2.json
while IFS='|' read -r arguments text; do
  # On Windows, where VERB is "opened", a call that reads from a pipe is left out, because wine would wait for ever.
  [[ $verb != opened || $arguments != *'<('* ]] || continue
  eval "ends 2 $arguments"
  says err "draw_pattern: ${text/VERB/$verb}"
  [ ! -e no.pdf ] || fail "$arguments wrote a file"
done <<'ROWS'
|give exactly one of official, custom,
--list --from first.json -o no.pdf|give exactly one of
--from first.json|no file to write
flexible --grid-spacing 5 -o no.pdf|--size is required
flexible --size 15 --grid-spacing 5 -o no.pdf|--size: "15" is not of the form CxR
flexible --size 15x9x2 --grid-spacing 5 -o no.pdf|--size: "15x9x2" is not
flexible --size 15x900 --grid-spacing 5 -o no.pdf|Parameter "Patterns"[0]/"GridSize" is [15, 900];
official --plate Plate13 -o no.pdf|Parameter "Patterns"[0]/"Type" is "Plate13";
custom --grid-spacing 0 -o no.pdf|Parameter "Patterns"[0]/"GridSpacing" is 0,
custom --grid-spacing 5 --resolution 5 -o no.pdf|Parameter "Resolution" is 5;
custom --grid-spacing 5 -o no.xyz|Parameter "Filename" is "no.xyz";
--from absent.json -o no.pdf|The file "absent.json" cannot be used: it cannot be opened.
--from . -o no.pdf|The file "." cannot be used: it cannot be VERB.
--from first.pdf -o no.pdf|The file "first.pdf" cannot be used: it is not JSON
--from parameters.json -o no.pdf|The file "parameters.json" is not a pattern file of version 1.
--from version2.json -o no.pdf|The file "version2.json" is not a pattern file of version 1.
--json zero.json -o no.pdf|The file "zero.json" cannot be used: it is not JSON
--json <(echo 5) -o no.pdf|The file
custom --grid-spacing 5 --wide -o no.pdf|The following argument was not expected: --wide (see draw_pattern --help)
ROWS

ends 1 custom --grid-spacing 5 -o absent/no.pdf
says err 'draw_pattern: The file "absent/no.pdf" could not be written'
for call in --list --help; do
  code=0
  "$draw_pattern" $call >/dev/full 2>err || code=$?
  [ "$code" = 1 ] || fail "draw_pattern $call with a full standard output ended with $code"
  says err 'draw_pattern: Standard output cannot be written.'
done
