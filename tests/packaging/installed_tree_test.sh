#!/usr/bin/env bash
# Installs this build, moves the tree, and uses it as other projects and the desktop do.
#   installed_tree_test.sh BUILD SOURCE COMPILER
set -euo pipefail
build=$1 source=$2 compiler=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
failures=0
fail() { echo "FAILED: $*" >&2; failures=1; }

cmake --install "$build" --prefix "$folder/first" >/dev/null
mkdir "a place"
mv first "a place/moved"
tree="$folder/a place/moved"
libraries=$(dirname "$(find "$tree" -name 'libLmLib64.so')")

# Compares the installed files, except those of the manual, with the expected list.
diff "$source/tests/packaging/installed_files.txt" <(cd "$tree" && find . -type f -o -type l |
  sed "s,^\./,,; s,^lib/[a-z0-9_]*-linux-gnu/,lib/,; s/\.so\.[0-9.]*$/.so.VERSION/; s/-[a-z]*\.cmake$/-CONFIG.cmake/
    s/_lmlib64\.cpython.*/_lmlib64.so/" |
  grep -v '^share/lmcaltab/manual/' | LC_ALL=C sort | uniq) ||
  fail "the list of installed files differs from installed_files.txt"
[ -f "$tree/share/lmcaltab/manual/index.html" ] || fail "no manual"
grep -rIl -e "$build" -e "$source" -e "$folder/first" "$tree" &&
  fail "these files contain a path of the build, the source or the first installation"

# Programs run from the moved tree and find their libraries in it.
PATH="$tree/bin:$PATH"
for program in LmView calibrate_cameras draw_pattern read_pattern; do
  ldd "$tree/bin/$program" | grep "$build" && fail "$program uses the build tree"
  "$program" --version >/dev/null || fail "$program does not start"
done
ldd "$tree/bin/LmCalTab" | grep -E "libopencv|libceres|$build" &&
  fail "LmCalTab links OpenCV, Ceres or a file of the build tree"

# PatternReader and Calibration export the public names and nothing else. check_exports.cmake checks LmLib64.
for library in PatternReader Calibration; do
  nm -DC --defined-only "$libraries/lib$library.so" | sed -E 's/^[0-9a-f]* [A-Za-z] //; s/^pattern_reader::|calibration:://; s/\(.*//' |
    LC_ALL=C sort -u | sed "s/^/$library /"
done | diff "$source/tests/packaging/exported_names.txt" - || fail "these names differ from exported_names.txt"

# The notices name every library that the binaries link.
notices=$tree/$(cd "$tree" && find share/doc -name THIRD_PARTY_NOTICES.md)
patterns=$(grep -oE '`(lib[a-zA-Z0-9_+]*|ld-linux)`' "$notices" | tr -d '`')
for file in "$tree"/bin/* "$libraries"/lib*.so "$tree"/lib/python3/*/lmlib64/*.so; do
  for needed in $(readelf -d "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
    case $needed in libLmLib64.so* | libPatternReader.so* | libCalibration.so*) continue ;; esac
    while read -r pattern; do [[ $needed != "$pattern"* ]] || continue 2; done <<<"$patterns"
    fail "$(basename "$file") links $needed, which THIRD_PARTY_NOTICES.md does not list"
  done
done

# Manual pages list the options that the programs have.
for page in "$tree"/share/man/man1/*.1; do
  MANWIDTH=100 man --warnings -E UTF-8 -l "$page" 2>&1 >page | grep . && fail "$page has warnings"
  name=$(basename "$page" .1)
  [ "$name" != LmCalTab ] || continue
  help=$("$name" --help-all 2>/dev/null || "$name" --help)
  diff <(grep -oE -- '--[a-z][a-z-]*' <<<"$help" | sort -u) <(grep -oE -- '--[a-z][a-z-]*' page | sort -u) ||
    fail "$name.1 has other options than the program"
done
desktop-file-validate "$tree"/share/applications/*.desktop || fail "desktop entry"
# The metainfo must be valid in both forms: without screenshots, and with screenshots whose address a packager gives.
screenshots=$source/packaging/desktop/screenshots.xml.in
mkdir with_screenshots
sed "/<launchable/{
  r $screenshots
}" "$tree"/share/metainfo/*.xml | sed 's,@LMCALTAB_SCREENSHOT_URL@,https://example.org,' \
  >with_screenshots/org.lmcaltab.LmCalTab.metainfo.xml
for file in "$tree"/share/metainfo/*.xml with_screenshots/*.xml; do
  appstreamcli validate --no-net "$file" >log || { cat log; fail "metainfo"; }
done
for picture in $(sed -n 's,.*@LMCALTAB_SCREENSHOT_URL@/\(.*\)</image>,\1,p' "$screenshots"); do
  [ -f "$source/manual/pages/images/$picture" ] || fail "no screenshot $picture"
done

[ "$(cat "$libraries"/cmake/*/*Targets.cmake | grep -c 'SPDX_LICENSE "MIT"')" = 3 ] || fail "a target states no licence"
# Other projects find the tree and use it: with CMake, with pkg-config and from the shell.
cmake -G Ninja -S "$source/examples" -B examples -DCMAKE_PREFIX_PATH="$tree" -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_BUILD_TYPE=Debug >log 2>&1 || { cat log; exit 1; }
cmake --build examples >log 2>&1 || { cat log; exit 1; }
export PKG_CONFIG_PATH="$libraries/pkgconfig"
for module in lmlib64 patternreader calibration; do
  [ "$(pkg-config --modversion $module)" = "$(draw_pattern --version | sed 's/.* //')" ] ||
    fail "$module.pc and draw_pattern have different versions"
done
eval "cc $source/examples/draw_target.c -o with_pkg_config $(pkg-config --cflags --libs lmlib64)"
LD_LIBRARY_PATH=$libraries ./with_pkg_config >/dev/null || fail "the program built with pkg-config ended with an error"

"$source/examples/draw_targets.sh"
[ "$(ls targets | wc -l)" = 8 ] || fail "draw_targets.sh wrote: $(ls targets)"
examples/draw_target >/dev/null && pdftoppm -r 60 -gray -png target.pdf page
[ "$(examples/read_target page-1.png 25 | wc -l)" = 135 ] || fail "read_target did not find all corners"

# The library returns the paths of the viewer and the manual in the moved tree.
export PYTHONPATH=$tree/lib/python3/dist-packages PYTHONDONTWRITEBYTECODE=1
for path in /Path/Application/LmView /Path/Manual; do
  named=$(/usr/bin/python3 -c "import lmlib64; print(lmlib64.get('$path'))")
  [[ -e $named && $named == "$tree"/* ]] || fail "$path is $named"
done

# The calibration examples find the focal length of the simulated camera: 1200 pixels.
draw_pattern flexible --size 9x7 --grid-spacing 25 --resolution 120 -o board.png -o board.json
/usr/bin/python3 "$source/tests/packaging/photograph_board.py" board.png 120
examples/calibrate_target board.json view-*.png >calibrated || fail "calibrate_target"
/usr/bin/python3 "$source/examples/python/calibrate.py" 25 view-*.png >>calibrated || fail "calibrate.py"
sed -n 's/^camera_matrix.*data: .\([0-9.]*\),.*/focal lengths \1 \1/p' camera.yaml >>calibrated
[ "$(awk '/focal lengths/ && $3 > 1190 && $3 < 1210 && $4 > 1190 && $4 < 1210' calibrated | wc -l)" = 2 ] ||
  fail "calibrate_target and calibrate.py did not both find focal lengths near 1200 pixels: $(cat calibrated)"
# This camera has no distortion, and its principal point is at (639.5, 479.5). So the point (0.1, 0.05, 1) appears 120
# pixels to the right of the principal point and 60 pixels below it.
calibrate_cameras --quiet --pattern board.json --out result view-*.png >log || { cat log; fail "calibrate_cameras"; }
/usr/bin/python3 "$source/examples/python/use_camera_info.py" result/*.camera_info.yaml view-0.png 0.1 0.05 1 >projected
[ "$(awk '$(NF-1) > 754.5 && $(NF-1) < 764.5 && $NF > 534.5 && $NF < 544.5' projected | wc -l)" = 2 ] ||
  fail "use_camera_info.py: $(cat projected)"
identify undistorted.png | grep -q 1280x960 || fail "undistorted.png"
exit $failures
