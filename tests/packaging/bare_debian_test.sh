#!/usr/bin/env bash
# Tries all ways in which new users install and use the project, in a Debian 12 with nothing else installed. Needs root,
# debootstrap, dpkg, ccache, Xvfb, xdotool and Debian's mirror. Downloaded files are kept in ~/.cache/lmcaltab-debian.
#   bare_debian_test.sh [WAY...]    tries all ways if none is named
#     packages   install packages/*.deb (made by ./package), try the windows, the shell and Python, purge the packages,
#                and check that the same files exist as before
#     embedded   the source tree as a part of another project, with FetchContent
#     run        build what ./run builds, with the Debian packages that ./run installs, and start LmCalTab
#     tree       the tree that `cmake --install` makes, and the examples as another project that uses this tree
#     pip        pip install . and the tests of the Python package
set -euo pipefail
source=$(cd "$(dirname "$(readlink -f "$0")")/../.." && pwd)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/lmcaltab-debian
. "$source/packaging/debian_packages.sh"

if [ -z "${LMCALTAB_BARE_DEBIAN:-}" ]; then
  mkdir -p "$cache/archives"
  if [ ! -f "$cache/root.tar" ]; then
    debootstrap --variant=minbase bookworm "$cache/new" http://deb.debian.org/debian >"$cache/log" ||
      { tail "$cache/log"; exit 1; }
    tar -C "$cache/new" --numeric-owner -cf "$cache/root.tar" . && rm -rf "$cache/new"
  fi
  # The script starts itself again in mount and process namespaces of its own. When that run ends, all its mounts and
  # background processes disappear, so nothing needs to be unmounted or killed.
  work=$(mktemp -d)
  trap 'rm -rf "$work"; rmdir "$source/build-bare" 2>/dev/null || true' EXIT
  LMCALTAB_BARE_DEBIAN=$work unshare --mount --pid --fork --kill-child --mount-proc "$0" "$@"
  exit
fi

work=$LMCALTAB_BARE_DEBIAN
root=$work/root
failures=0
fail() { echo "FAILED: $*" >&2; failures=1; }

# Makes a new root that has the source tree at /source, read-only.
new_root() {
  root=$work/$1
  mkdir "$root"
  tar -C "$root" -xf "$cache/root.tar"
  cp /etc/resolv.conf "$root/etc/"
  echo 'Binary::apt::APT::Keep-Downloaded-Packages "true";' >"$root/etc/apt/apt.conf.d/keep"
  echo force-unsafe-io >"$root/etc/dpkg/dpkg.cfg.d/fast"
  mkdir "$root/source"
  mount --bind "$cache/archives" "$root/var/cache/apt/archives"
  mount --bind -o ro "$source" "$root/source"
  mount -t proc proc "$root/proc"
  mount --bind /dev "$root/dev"
  enter=(env -i PATH=/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin HOME=/root LANG=C.UTF-8 "DISPLAY=$DISPLAY"
    DEBIAN_FRONTEND=noninteractive chroot "$root")
  inside apt-get update -q >/dev/null
}
inside() { "${enter[@]}" "$@"; }
install() {
  inside apt install -y -q --no-install-recommends "$@" >"$work/log" 2>&1 || { tail -n 30 "$work/log"; return 1; }
}

# Lists the files on the disk and the packages that dpkg knows. Leaves out the records of apt and dpkg, logs, temporary
# files, the source tree, and /etc/gshadow-, a backup file that remains when Debian's dbus is purged.
list_files() {
  (cd "$root" && find . -xdev \( -path ./var/lib/dpkg -o -path ./var/lib/apt -o -path ./var/cache/apt \
    -o -path ./var/log -o -path ./run -o -path ./tmp -o -path ./source -o -path ./etc/gshadow- \) -prune -o -print |
    LC_ALL=C sort)
  inside dpkg --get-selections
}

start_screen() {
  local number
  exec 3< <(exec Xvfb -displayfd 1 -screen 0 1600x1200x24 2>/dev/null)
  read -r number <&3
  export DISPLAY=:$number
}
# shows_window TITLE PROGRAM: starts the program in the new root, checks that it shows a window with this title, and
# ends it.
shows_window() {
  local program window
  "${enter[@]}" "$2" >"$work/window.log" 2>&1 &
  program=$!
  if window=$(timeout 60 xdotool search --sync --onlyvisible --limit 1 --name "^$1\$"); then
    xdotool getwindowgeometry "$window" | sed -n "s,.*Geometry:,$2 shows a window of,p"
  else
    cat "$work/window.log"
    fail "$2 shows no window"
  fi
  kill "$program" && wait "$program" || true
}

try_packages() {
  new_root packages
  mkdir "$root/tmp/packages"
  cp "$source"/packages/*.deb "$root/tmp/packages/"
  local names
  names=$(for file in "$source"/packages/*.deb; do dpkg-deb -f "$file" Package; done)
  list_files >"$work/before"
  install $(cd "$root" && printf '/%s ' tmp/packages/*.deb) || { fail "apt install"; return; }
  shows_window "Generate Calibration Pattern" LmCalTab
  shows_window "LmView.*" LmView
  inside sh -ec '
    cd /tmp
    draw_pattern flexible --size 9x7 --grid-spacing 25 --resolution 100 -o board.pdf -o board.png -o board.json
    draw_pattern --from board.json -o again.pdf
    cmp board.pdf again.pdf
    read_pattern --pattern board.json board.png >reading.json
    [ -f /usr/share/lmcaltab/manual/index.html ]' || fail "the shell"
  inside python3 -c '
import json, lmlib64
assert len(json.load(open("/tmp/reading.json"))["images"][0]["patterns"][0]["corners"]) == 63
picture = lmlib64.draw("flexible", size=(9, 7), grid_spacing=25, image_size=900)
[reading] = lmlib64.read_patterns(picture, grid_spacing=25)
assert reading.object_points.shape == (63, 3)
lmlib64.draw("halcon", grid_spacing=12, file="/tmp/plate.svg")' || fail "Python"
  inside apt-get purge -y -q $names >"$work/log" 2>&1 && inside apt-get autoremove --purge -y -q >"$work/log" 2>&1 ||
    { tail -n 30 "$work/log"; fail "apt purge"; }
  list_files | diff "$work/before" - || fail "these files are new or gone after the purge"
}

# Builds the library alone, as a part of another project.
try_embedded() {
  new_root embedded
  install g++ cmake ninja-build zlib1g-dev nlohmann-json3-dev
  inside bash /source/tests/packaging/embedded_library_test.sh - /source c++ || fail "embedded_library_test.sh"
}

# Makes a root with the packages that ./run installs. The source tree has the same place as on this machine, so that
# object files can come from this machine's ccache. Without ccache, a build of everything takes a quarter of an hour.
developer_root() {
  [ ! -d "$work/developer" ] || { root=$work/developer; return; }
  new_root developer
  install "${build_packages[@]}" "${viewer_packages[@]}" ccache
  mkdir -p "$root$source" "$root/root/.cache/ccache" "$work/build" "$source/build-bare"
  mount --bind "$source" "$root$source"
  mount --bind "$work/build" "$root$source/build-bare"
  mount --bind "$(ccache -k cache_dir)" "$root/root/.cache/ccache"
  [ ! -f /etc/ccache.conf ] || cp /etc/ccache.conf "$root/etc/"
}

try_run() {
  developer_root
  inside sh -ec "cd $source
    cmake -S . -B build-bare -G Ninja -DCMAKE_BUILD_TYPE=Release -DLMCALTAB_VIEWER=ON -DLMCALTAB_WARNINGS_AS_ERRORS=ON
    nice -n 5 cmake --build build-bare --target LmCalTab LmView manual" >"$work/log" 2>&1 ||
    { tail -n 30 "$work/log"; fail "build"; return; }
  shows_window "Generate Calibration Pattern" "$source/build-bare/bin/LmCalTab"
}

# Builds everything and installs it. Then uses the installed tree from another folder.
try_tree() {
  developer_root
  install "${python_packages[@]}" python3-opencv python3-yaml
  inside sh -ec "cd $source
    cmake -S . -B build-bare -G Ninja -DCMAKE_BUILD_TYPE=Release -DLMCALTAB_VIEWER=ON -DLMCALTAB_PYTHON=ON \
      -DLMCALTAB_WARNINGS_AS_ERRORS=ON
    nice -n 5 cmake --build build-bare
    cmake --install build-bare --prefix /opt/lmcaltab
    cmake -G Ninja -S /source/examples -B /tmp/examples -DCMAKE_PREFIX_PATH=/opt/lmcaltab
    cmake --build /tmp/examples
    cd /tmp
    PATH=/opt/lmcaltab/bin:\$PATH PYTHONPATH=/opt/lmcaltab/lib/python3/dist-packages
    export PATH PYTHONPATH
    /tmp/examples/draw_target
    draw_pattern flexible --size 9x7 --grid-spacing 25 --resolution 120 -o board.png -o board.json
    read_pattern --pattern board.json board.png >/dev/null
    python3 /source/tests/packaging/photograph_board.py board.png 120
    calibrate_cameras --quiet --pattern board.json --out result view-*.png
    python3 /source/examples/python/use_camera_info.py result/*.camera_info.yaml view-0.png 0 0 1
    python3 /source/examples/python/calibrate.py 25 view-*.png
    /tmp/examples/calibrate_target board.json view-*.png" >"$work/log" 2>&1 || { tail -n 30 "$work/log"; fail "tree"; }
  tail -n 3 "$work/log"
}

try_pip() {
  developer_root
  install "${python_packages[@]}" python3-pip python3-venv
  inside sh -ec "cd $source
    python3 -m venv --system-site-packages /tmp/environment
    CMAKE_ARGS=-DLMCALTAB_WARNINGS_AS_ERRORS=ON nice -n 5 /tmp/environment/bin/pip install --no-index \
      --config-settings build-dir=build-bare/wheel .
    LMCALTAB_VERSION=\$(sed -n 's/^#define LMLIB_VERSION \"\(.*\)\"/\1/p' camera_library/lmlib64.h) \
      /tmp/environment/bin/python tests/python/lmlib64_test.py" >"$work/log" 2>&1 ||
    { tail -n 30 "$work/log"; fail "pip"; }
  tail -n 3 "$work/log"
}

start_screen
for way in "${@:-packages embedded run tree pip}"; do
  for name in $way; do
    echo "== $name"
    "try_$name"
  done
done
[ "$failures" != 0 ] || echo "All of it works."
exit $failures
