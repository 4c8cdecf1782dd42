// Finds the file that this library was loaded from. Each system has its own source file.
#pragma once

#include <string>
#include <string_view>

namespace lmlib64 {

// Returns the path of the file that this code was loaded from. The path is absolute, has no symbolic links and has
// forward slashes. It is in the system's local 8-bit encoding. The result is empty if the system does not tell which
// file it is.
std::string libraryFile();

// The ending of a program's file name: ".exe" on Windows, otherwise empty.
extern const std::string_view programFileEnding;

}  // namespace lmlib64
