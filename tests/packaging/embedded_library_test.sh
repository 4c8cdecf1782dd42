#!/usr/bin/env bash
# Builds another project that includes this source tree. Tests that only the library is built, that it needs neither Qt
# nor OpenCV, and that the other project's settings stay as they are.
#   embedded_library_test.sh BUILD SOURCE COMPILER
# BUILD is not used. It is there because installed_tree_test.sh is called with the same arguments.
set -euo pipefail
source=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
cp "$source/examples/draw_target.c" .
cat >CMakeLists.txt <<PROJECT
cmake_minimum_required(VERSION 3.25)
project(Outer LANGUAGES C CXX)
foreach(package Qt5 OpenCV Ceres CLI11)
  set(CMAKE_DISABLE_FIND_PACKAGE_\${package} ON)
endforeach()
get_cmake_property(before VARIABLES)
include(FetchContent)
FetchContent_Declare(LmCalTab SOURCE_DIR $source)
FetchContent_MakeAvailable(LmCalTab)
get_cmake_property(after VARIABLES)
list(REMOVE_ITEM after before \${before})
list(FILTER after INCLUDE REGEX "^(CMAKE_(CXX|C)_(STANDARD|VISIBILITY|EXT|FLAGS|COMPILER_LAUNCHER)|CMAKE_.*_DIRECTORY|CMAKE_.*RPATH)")
get_directory_property(options COMPILE_OPTIONS INCLUDE_DIRECTORIES LINK_OPTIONS)
if(after OR options)
  message(FATAL_ERROR "leaked: \${after} \${options}")
endif()
add_executable(draw_target draw_target.c)
target_link_libraries(draw_target LmLib64::LmLib64)
install(TARGETS draw_target)
PROJECT
# Compiling is fastest with an empty build type, because the compiler then neither optimises nor writes debug
# information.
cmake -G Ninja -S . -B build -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_COMPILER="$3" >log 2>&1 || { cat log; exit 1; }
cmake --build build >log 2>&1 || { tail -n 40 log; exit 1; }
built=$(find build -name '*.so' -o -type f -perm -u+x -path '*bin/*' ! -path '*/CMakeFiles/*' | sort | tr '\n' ' ')
[ "$built" = "build/_deps/lmcaltab-build/lib/libLmLib64.so " ] || { echo "built: $built"; exit 1; }
build/draw_target | grep -q '^LmLib64 [0-9.]* wrote target.pdf$'
head -c 5 target.pdf | grep -q '%PDF-'
cmake --install build --prefix prefix >log
[ "$(find prefix -type f)" = prefix/bin/draw_target ] || { find prefix -type f; exit 1; }
