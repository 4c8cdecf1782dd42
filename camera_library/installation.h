// Where the files of an installation lie, seen from the library's own file. The library lies in a folder of
// its installation named bin, lib, lib32, lib64 or libx32, or in folders below one (lib/x86_64-linux-gnu):
// the root is the parent of the nearest folder of such a name above the file. Where there is none, the root
// is the parent of the library's folder. Names alone decide, not what exists on the disk.
#pragma once

#include <string>
#include <string_view>

#include "camera_library/tree/node.h"

namespace lmlib64 {

// The installation's root, without a slash at its end, for an absolute path with forward slashes.
std::string_view installationRoot(std::string_view libraryFile);

// The tree's "Path" for the installation this library was loaded from; without children where the system
// does not tell where that is.
NodeObject installationPaths();

}  // namespace lmlib64
