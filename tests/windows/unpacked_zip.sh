# Unpacks the zip for the tests that run the packaged Windows programs, not those in the build folder. Source it with
# the folder of the packages as its argument. It sets
#   packages, source, folder   the folder of the packages, the folder of the project, and a temporary folder
#   run                        the script that runs a Windows program; wine keeps its files in the temporary folder
#   tree                       the folder from the zip; its path has a space and characters of several writing systems
# When the script that sources this file ends, the Windows programs are ended and the temporary folder is removed.
packages=$(realpath "$1")
source=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../..")
run=$source/packaging/windows/wine_run
folder=$(mktemp -d)
export WINEPREFIX=$folder/wine
unset LMCALTAB_DLL_FOLDERS QT_QPA_PLATFORM
trap '/usr/lib/wine/wineserver64 -k 2>/dev/null; wait; rm -rf "$folder"' EXIT

mkdir "$folder/Prüf 図"
unzip -q "$packages"/LmCalTab-*-win64.zip -d "$folder/Prüf 図"
tree=$(echo "$folder/Prüf 図"/LmCalTab-*-win64)
"$run" wineboot -i 2>/dev/null

# is_soon COMMAND...: waits until the command succeeds, but at most a minute.
is_soon() {
  for _ in $(seq 240); do "$@" && return; sleep 0.25; done
  return 1
}
