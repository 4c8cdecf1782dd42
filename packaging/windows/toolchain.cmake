# 64-bit Windows from Debian: mingw-w64 with POSIX threads, which std::thread needs. CMAKE_FIND_ROOT_PATH has the folders
# of the libraries, and only they are searched; ../../windows sets it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER /usr/bin/x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER /usr/bin/x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER /usr/bin/x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Otherwise pkg-config finds the libraries of this system.
set(lmcaltab_modules ${CMAKE_FIND_ROOT_PATH})
list(TRANSFORM lmcaltab_modules APPEND /lib/pkgconfig)
list(JOIN lmcaltab_modules ":" lmcaltab_modules)
set(ENV{PKG_CONFIG_LIBDIR} "${lmcaltab_modules}")

# Static, so that no other DLL is needed.
set(ZLIB_INCLUDE_DIR /usr/x86_64-w64-mingw32/include CACHE PATH "")
set(ZLIB_LIBRARY /usr/x86_64-w64-mingw32/lib/libz.a CACHE FILEPATH "")
