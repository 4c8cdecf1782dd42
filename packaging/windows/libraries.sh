# Builds the libraries that the Windows programs link. The compiler is mingw-w64, and the sources are Debian's. The
# script ../../windows loads this file.
#
# build_NAME builds one library in the current folder and installs it to $prefix. The function is run again after an
# interruption, so each of its steps must either continue or find that it has nothing to do.
#
# A library is built anew, in new folders, if one of these changes: the text of its function, its version, its
# CMakeLists.txt in $own_projects, the tool chain file (except for Qt, which does not use it), or a library that it
# needs.

target=x86_64-w64-mingw32
cache=${XDG_CACHE_HOME:-$HOME/.cache}/lmcaltab-windows
jobs=${LMCALTAB_WINDOWS_JOBS:-$(nproc)}
toolchain=$PWD/packaging/windows/toolchain.cmake
own_projects=$PWD/packaging/windows # CMake projects for libraries whose own build scripts are unsuitable here

# The libraries in the order in which they are built. Short builds come first, so that their errors show early.
libraries=(headers googletest libexif png jpeg tiff ceres qt qtsvg qwt opencv)
declare -A source_package=([qt]=qtbase-opensource-src [qtsvg]=qtsvg-opensource-src [png]=libpng1.6 [jpeg]=libjpeg-turbo [tiff]=tiff
  [opencv]=opencv [ceres]=ceres-solver [qwt]=qwt [libexif]=libexif)
# The versions in Debian 12. If Debian has several revisions of a version, the newest one is taken, because it has the
# security fixes.
declare -A version=([qt]=5.15.8 [qtsvg]=5.15.8 [png]=1.6.39 [jpeg]=2.1.5 [tiff]=4.5.0 [opencv]=4.6.0 [ceres]=2.1.0 [qwt]=6.1.4
  [libexif]=0.6.24)
declare -A needs=([tiff]=jpeg [opencv]="png jpeg tiff" [ceres]=headers [qtsvg]=qt [qwt]=qt)

key_of() {
  local name=$1 needed
  {
    declare -f "build_$name"
    echo "${version[$name]:-}"
    [ "$name" = qt ] || cat "$toolchain"
    [ ! -e "$own_projects/$name/CMakeLists.txt" ] || cat "$own_projects/$name/CMakeLists.txt"
    for needed in ${needs[$name]:-}; do key_of "$needed"; done
  } | sha256sum | cut -c1-12
}
prefix_of() { echo "$cache/installed/$1-$(key_of "$1")"; }
is_built() { [ -e "$(prefix_of "$1")/.complete" ]; }

# Prints the prefixes of these libraries, with ";" between them.
prefixes_of() {
  local name list=
  for name in "$@"; do list+=";$(prefix_of "$name")"; done
  echo "${list#;}"
}

# Makes the names without "-posix" stand for the compilers with POSIX threads. Otherwise they may stand for compilers
# without std::thread.
use_compilers() {
  local tool
  mkdir -p "$cache/bin"
  for tool in gcc g++ cpp gcc-ar gcc-nm gcc-ranlib; do
    ln -sf "/usr/bin/$target-$tool-posix" "$cache/bin/$target-$tool"
  done
  export PATH=$cache/bin:$PATH
}

# Runs an apt command that uses the package sources and lists in $cache/apt instead of the system's. So root privileges
# are not needed, and the system's package sources stay unchanged.
source_apt() {
  local command=$1 state=$cache/apt
  mkdir -p "$state/lists/partial" "$state/archives/partial"
  local keyring=/usr/share/keyrings/debian-archive-keyring.gpg
  printf 'deb-src [signed-by=%s] %s main\n' \
    $keyring "http://deb.debian.org/debian bookworm" \
    $keyring "http://deb.debian.org/debian bookworm-updates" \
    $keyring "http://deb.debian.org/debian-security bookworm-security" >"$state/sources.list"
  "$command" -o Dir::Etc::SourceList="$state/sources.list" -o Dir::Etc::SourceParts=/dev/null \
    -o Dir::State::Lists="$state/lists" -o Dir::Cache="$state" -o APT::Sandbox::User="$(id -un)" "${@:2}"
}

# Downloads the source of a library and unpacks it to $cache/sources/NAME-VERSION. Takes the newest of Debian's
# revisions that can be downloaded.
fetch() {
  local name=$1 folder=$cache/sources/$1-${version[$1]} package=${source_package[$1]}
  [ ! -d "$folder" ] || return 0
  if [ -z "$(find "$cache/apt/fresh" -mmin -60 2>/dev/null)" ]; then
    source_apt apt-get update || return 1
    touch "$cache/apt/fresh"
  fi
  local work=$folder.unpacking revision unpacked
  for revision in $(source_apt apt-cache showsrc --only-source "$package" |
    sed -n 's/^Version: //p' | grep -F -- "${version[$name]}" | sort -rV); do
    rm -rf "$work"
    mkdir -p "$work"
    (cd "$work" && source_apt apt-get source --only-source "$package=$revision") || continue
    unpacked=$(find "$work" -mindepth 1 -maxdepth 1 -type d)
    mv "$unpacked" "$folder"
    rm -rf "$work"
    return 0
  done
  echo "Version ${version[$name]} of Debian's source package $package cannot be downloaded." >&2
  return 1
}

cross() {
  local build=$1
  shift
  [ -e "$build/build.ninja" ] ||
    cmake -G Ninja -B "$build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF -DCMAKE_CXX_COMPILER_LAUNCHER= "$@"
  ninja -C "$build" -j "$jobs" install
}

# Copies headers that are the same on every system, so that they can be used without this system's other headers.
build_headers() {
  mkdir -p "$prefix/include" "$prefix/share/cmake"
  cp -r /usr/include/nlohmann /usr/include/CLI /usr/include/eigen3 "$prefix/include/"
  cp -r /usr/share/cmake/nlohmann_json /usr/share/cmake/CLI11 "$prefix/share/cmake/"
  mkdir -p "$prefix/share/eigen3"
  cp -r /usr/share/eigen3/cmake "$prefix/share/eigen3/"
}

build_googletest() { cross . -S /usr/src/googletest; }

build_libexif() {
  cross . -S "$own_projects/libexif" -DLIBEXIF_SOURCES="$sources" -DLIBEXIF_VERSION="${version[libexif]}"
}

build_png() { cross . -S "$sources" -DPNG_SHARED=OFF -DPNG_TESTS=OFF -DPNG_EXECUTABLES=OFF; }

build_jpeg() { cross . -S "$sources" -DENABLE_SHARED=OFF -DWITH_SIMD=OFF -DWITH_TURBOJPEG=OFF; }

build_tiff() {
  cross . -S "$sources" -DCMAKE_FIND_ROOT_PATH="$(prefixes_of jpeg)" -Djpeg=ON -Dzlib=ON -Dlzma=OFF -Dzstd=OFF \
    -Dwebp=OFF -Djbig=OFF -Dlerc=OFF -Dlibdeflate=OFF -Dold-jpeg=OFF -Dcxx=OFF \
    -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF
}

# Builds Ceres Solver with Eigen's solvers only, because the others need a BLAS library.
build_ceres() {
  cross . -S "$sources" -DCMAKE_FIND_ROOT_PATH="$(prefixes_of headers)" -DEIGENSPARSE=ON -DSUITESPARSE=OFF -DCXSPARSE=OFF \
    -DLAPACK=OFF -DMINIGLOG=ON -DGFLAGS=OFF -DBUILD_TESTING=OFF -DBUILD_EXAMPLES=OFF -DBUILD_BENCHMARKS=OFF \
    -DUSE_CUDA=OFF
}

# Debian's source has no headers for graphics tablets, so tablet support is turned off. Only the "qmake_all" of
# src/ is made, because the "qmake_all" of the top folder also enters tests/ and fails there.
build_qt() {
  [ -e .configured ] || MAKEFLAGS=-j$jobs "$sources/configure" -opensource -confirm-license \
    -xplatform win32-g++ -device-option CROSS_COMPILE=$target- \
    -release -shared -silent -prefix "$prefix" -nomake examples -nomake tests \
    -no-opengl -no-feature-vulkan -no-dbus -no-icu -no-ssl -no-openssl -no-schannel \
    -no-feature-sql -no-feature-network -no-feature-concurrent -no-feature-printer \
    -no-feature-tabletevent -no-feature-direct2d -no-feature-direct2d1_1 -no-directwrite \
    -no-glib -no-fontconfig -qt-zlib -qt-pcre -qt-libpng -qt-libjpeg -qt-freetype -qt-harfbuzz -qt-doubleconversion
  touch .configured
  [ -e .makefiles ] || make -j "$jobs" sub-src-qmake_all
  touch .makefiles
  make -j "$jobs" sub-src
  make -C src install
  make sub-qmake-qmake-aux-pro-install_subtargets install_mkspecs install_syncqt
}

# Installs into the folder of Qt, because Qt's CMake files expect all of Qt's modules there.
build_qtsvg() {
  [ -e Makefile ] || "$(prefix_of qt)/bin/qmake" "$sources/qtsvg.pro"
  make -j "$jobs" sub-src
  make -C src install
}

build_qwt() { cross . -S "$own_projects/qwt" -DQWT_SOURCES="$sources" -DCMAKE_FIND_ROOT_PATH="$(prefixes_of qt)"; }

# Debian's source comes without the libraries that OpenCV bundles, so the options build none of them.
build_opencv() {
  cross . -S "$sources" -DCMAKE_FIND_ROOT_PATH="$(prefixes_of png jpeg tiff)" \
    -DBUILD_LIST=core,imgproc,imgcodecs,calib3d,features2d,flann,videoio \
    -DBUILD_TESTS=OFF -DBUILD_PERF_TESTS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_opencv_apps=OFF -DBUILD_JAVA=OFF \
    -DBUILD_ZLIB=OFF -DBUILD_PNG=OFF -DBUILD_JPEG=OFF -DBUILD_TIFF=OFF -DWITH_WEBP=OFF -DWITH_OPENEXR=OFF \
    -DWITH_JASPER=OFF -DWITH_OPENJPEG=OFF -DWITH_IPP=OFF -DWITH_OPENCL=OFF -DWITH_DIRECTX=OFF -DWITH_EIGEN=OFF \
    -DWITH_LAPACK=OFF -DWITH_PROTOBUF=OFF -DWITH_ADE=OFF -DWITH_QUIRC=OFF -DWITH_FFMPEG=OFF -DWITH_WIN32UI=OFF \
    -DWITH_DSHOW=ON -DWITH_MSMF=OFF -DWITH_ITT=OFF -DWITH_IMGCODEC_HDR=OFF -DWITH_GSTREAMER=OFF
}

# Builds one library in the background and reports how far it is, since Qt takes most of an hour.
build_library() {
  local name=$1 began=$SECONDS log=$cache/log/$1.log
  local prefix build sources=
  prefix=$(prefix_of "$name")
  build=$cache/building/$name-$(key_of "$name")
  mkdir -p "$cache/log" "$build" "$prefix"
  # The build uses copies of these files, because an interrupted build may be continued from another checkout.
  mkdir -p "$build/recipe"
  cp -r --update "$toolchain" "$own_projects/libexif" "$own_projects/qwt" "$build/recipe"
  local toolchain=$build/recipe/toolchain.cmake own_projects=$build/recipe
  exec 8>"$cache/log/$name.lock"
  flock -n 8 || { echo "$name is being built by another process." >&2; return 1; }
  if [ -n "${source_package[$name]:-}" ]; then
    fetch "$name" >"$cache/log/$name-source.log" 2>&1 || { tail -n 20 "$cache/log/$name-source.log" >&2; return 1; }
    sources=$cache/sources/$name-${version[$name]}
  fi
  # The build runs in a process group of its own, so that all of its processes can be ended. It must not be started
  # in the condition of an "if" or to the left of "||", because bash ignores "set -e" in such places.
  set -m
  (set -e; cd "$build"; "build_$name") >"$log" 2>&1 8>&- &
  set +m
  local seconds=0
  builder=$!
  trap 'kill -- -"$builder" 2>/dev/null' EXIT
  while kill -0 "$builder" 2>/dev/null; do
    sleep 1
    seconds=$((seconds + 1))
    [ $((seconds % 60)) -ne 0 ] ||
      echo "  $name: $((seconds / 60)) min, $(find "$build" -name '*.o' -o -name '*.obj' | wc -l) files compiled"
  done
  wait "$builder" || { tail -n 40 "$log" >&2; echo "$name could not be built; all of its output is in $log" >&2; return 1; }
  trap - EXIT
  touch "$prefix/.complete"
  rm -rf "$build"
  exec 8>&-
  echo "  $name: ready after $((SECONDS - began)) s"
}

build_libraries() {
  local name
  use_compilers
  for name in "$@"; do
    is_built "$name" || build_library "$name"
  done
}
