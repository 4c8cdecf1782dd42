// Finds the files of the installation from the location of the library's own file. The library is usually in a folder
// named bin, lib, lib32, lib64 or libx32 (in upper or lower case), or in a subfolder such as lib/x86_64-linux-gnu. From
// the library's file upwards, the first folder with one of these five names is taken. The root of the installation is
// the parent of that folder. If no folder has one of these names, the root is the parent of the library's folder. Only
// the names matter; the folders need not exist.
#pragma once

#include <string>
#include <string_view>

#include "camera_library/tree/node.h"

namespace lmlib64 {

// Returns the installation's root, without a slash at its end. `libraryFile` is an absolute path with forward slashes.
std::string_view installationRoot(std::string_view libraryFile);

// Returns the tree's "Path" for the installation that this library was loaded from. If the system does not tell where
// the library is, "Path" has only the library's version.
NodeObject installationPaths();

}  // namespace lmlib64
