# Settings for the compilers, and the folders into which everything is built. The build tree has the layout of an
# installation, so that paths relative to the program are valid in both. If this project is part of another project, the
# settings apply only to this project's own folders.
include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(LMCALTAB_SHARE_DIRECTORY ${PROJECT_BINARY_DIR}/share/lmcaltab)

# The program finds the library of its own installation by a relative RUNPATH. Folders in LD_LIBRARY_PATH are searched
# first.
if(NOT WIN32)
  set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
  set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  add_link_options(LINKER:--enable-new-dtags)
endif()

if(WIN32)
  # The first two definitions keep the macros min and max, and rarely used declarations, out of windows.h. The third
  # makes cmath define M_PI.
  add_compile_definitions(NOMINMAX WIN32_LEAN_AND_MEAN _USE_MATH_DEFINES)
endif()
if(MSVC)
  add_compile_options(/utf-8 /permissive- /Zc:__cplusplus)
  add_link_options(/MANIFEST:NO) # the programs' resources contain the manifest
endif()

# GNU ld for Windows searches each archive and import library once, for symbols that earlier files need. CMake's order
# may put an archive after an import library whose symbols the archive needs. So all libraries are searched as a group,
# that is, repeatedly.
if(MINGW)
  foreach(language IN ITEMS C CXX)
    string(REPLACE "<LINK_LIBRARIES>" "-Wl,--start-group <LINK_LIBRARIES> -Wl,--end-group"
      CMAKE_${language}_LINK_EXECUTABLE "${CMAKE_${language}_LINK_EXECUTABLE}")
  endforeach()
endif()

find_program(LMCALTAB_CCACHE ccache)
if(LMCALTAB_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${LMCALTAB_CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${LMCALTAB_CCACHE})
endif()

if(LMCALTAB_SANITIZE)
  add_compile_options(-fsanitize=${LMCALTAB_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${LMCALTAB_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND LMCALTAB_SANITIZE MATCHES undefined)
    add_compile_options(-fsanitize-ignorelist=${CMAKE_CURRENT_SOURCE_DIR}/tests/ubsan_ignored_headers.txt)
  endif()
endif()

# A sanitized build makes only those benchmarks that its tests run. It does not make the Python package, because an
# interpreter without sanitizers cannot load it. The only build of .ci/run with clang++ is a sanitized one, so
# clang++ never compiles the source files that are left out here. For these files, clang-tidy reports clang's warnings.
if(LMCALTAB_SANITIZE)
  set(LMCALTAB_NOT_IF_SANITIZED EXCLUDE_FROM_ALL)
endif()

# The thread sanitizer's build leaves out the longest tests of single-threaded code, the tests of failing allocations,
# and the tests of the viewer's window. (session_test checks the viewer's threads.) In the folders that are added with
# ${LMCALTAB_ONLY_IF_USED}, it builds only the targets that the remaining tests use.
if(LMCALTAB_SANITIZE MATCHES thread)
  set(LMCALTAB_THREAD_TESTS_ONLY ON)
  set(LMCALTAB_ONLY_IF_USED EXCLUDE_FROM_ALL)
endif()

# Includes are written relative to the root of the source tree: "lmlib/tree_item.h".
include_directories(${PROJECT_SOURCE_DIR})
