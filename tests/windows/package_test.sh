#!/usr/bin/env bash
# Tests the zip and the installer under wine. Except for the search for thread_local objects, it uses no other build
# product of this project. It tests the resources of the programs, a start from a folder whose name has a space and
# characters of several writing systems, an installation without administrator rights, a removal without a trace, and a
# client of the library.
#   package_test.sh FOLDER_OF_PACKAGES
set -u
unset DISPLAY
. "$(dirname "$0")/unpacked_zip.sh" "$1"
. "$(dirname "$0")/cases.sh"
absent() { [ ! -e "$1" ]; }
version=$(basename "$tree" | cut -d- -f2)

# Types of resources: 14 is a group of icons, 16 the version, 24 the manifest.
text_of() { wrestool -x --raw -t16 "$1" | iconv -f UTF-16LE -t UTF-8 -c | tr -d '\0'; }
for file in "$tree"/bin/{*.exe,LmLib64.dll}; do
  name=$(basename "$file")
  expect "$name has the version" grep -qF "ProductVersion$version" <(text_of "$file" | tr -d '\001\002\003-\037')
  expect "$name has a description" grep -qF "FileDescription" <(text_of "$file")
  case $name in
    *.exe)
      expect "$name has icons" test "$(wrestool -l -t3 "$file" | wc -l)" -ge 4
      expect "$name has one group of icons" test "$(wrestool -l -t14 "$file" | wc -l)" -eq 1
      expect "$name has its manifest" cmp <(wrestool -x --raw -t24 "$file") "$source/packaging/windows/program.manifest"
      ;;
  esac
done

# g++ for Windows frees the memory of thread_local objects before it calls their destructors, so there must be none with
# a destructor. The files in the zip have no symbols, so this looks at the files of the build.
has_no_thread_destructors() {
  local symbols
  symbols=$(x86_64-w64-mingw32-nm "$1") && [ -n "$symbols" ] && ! grep -q __cxa_thread_atexit <<<"$symbols"
}
for file in "$packages"/../{bin/*.{exe,dll},tests/*.exe,tests/scripted/*.{exe,dll}}; do
  expect "$(basename "$file") has no thread_local objects with destructors" has_no_thread_destructors "$file"
done

# draws TREE: tests that draw_pattern draws with only the files in the tree.
draws() {
  (cd "$folder" && "$run" "$1/bin/draw_pattern.exe" custom --grid-spacing 12 --thickness 2 -o "日本語 Größe.pdf") &&
    rm "$folder/日本語 Größe.pdf"
}
expect "draws from the zip" draws "$tree"
expect "has the licences of what it contains" test "$(find "$tree/share/doc/LmCalTab/licences" -name '*.txt' | wc -l)" -ge 15

# Makes a client with another compiler and without a C library.
cat >"$folder/client.c" <<'CLIENT'
#include <lmlib64.h>
int start(void) {
    int32_t result = -1;
    lmLibFinalize(&result);
    return result == LmLibResultOperationSucceeded ? 42 : 1;
}
CLIENT
link_client() {
  clang --target=x86_64-pc-windows-msvc -ffreestanding -I"$tree/include" -c "$folder/client.c" -o "$folder/client.obj" &&
    lld-link -entry:start -subsystem:console -nodefaultlib -out:"$tree/bin/client.exe" "$folder/client.obj" \
      "$tree/lib/LmLib64.lib"
}
expect "links a client of another compiler" link_client
"$run" "$tree/bin/client.exe"
expect "runs the client" test $? -eq 42

# Installs for this user only, runs an installed program, and removes everything again.
list() { (cd "$1" && find . -not -path './users/*/Temp/*' -not -name client.exe -not -name Uninstall.exe | LC_ALL=C sort); }
list "$WINEPREFIX/drive_c" >"$folder/before"
installer=$(echo "$packages"/LmCalTab-*-win64.exe)
expect "installs" "$run" "$installer" /S
installed=$(echo "$WINEPREFIX"/drive_c/users/*/AppData/Local/Programs/LmCalTab)
expect "installs what is in the zip" diff <(list "$tree") <(list "$installed")
menu=$(echo "$WINEPREFIX"/drive_c/users/*/AppData/Roaming/Microsoft/Windows/"Start Menu"/Programs/LmCalTab)
expect "a start menu entry" test -e "$menu/LmCalTab.lnk"
uninstall_key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\LmCalTab'
"$run" reg query "$uninstall_key" >"$folder/key" 2>&1
expect "an entry in the list of programs" grep -q "DisplayVersion.*$version" "$folder/key"
expect "draws as installed" draws "$installed"

expect "installs over it" "$run" "$installer" /S
expect "draws again" draws "$installed"
echo mine >"$installed/my own file.txt"
expect "uninstalls" "$run" "$installed/Uninstall.exe" /S
expect "removes Uninstall.exe" is_soon absent "$installed/Uninstall.exe"
expect "keeps a file of the user" test -e "$installed/my own file.txt"
rm -r "$installed"

expect "installs anew" "$run" "$installer" /S
expect "uninstalls again" "$run" "$installed/Uninstall.exe" /S
expect "removes the empty Programs folder" is_soon absent "$(dirname "$installed")"
expect "leaves nothing" diff "$folder/before" <(list "$WINEPREFIX/drive_c")
"$run" reg query "$uninstall_key" >"$folder/key" 2>&1
expect "not in the list of programs" test $? -ne 0

report_cases
