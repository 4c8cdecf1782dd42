// Finds the file that this library was loaded from. Each system has its own source file.
#pragma once

#include <string>
#include <string_view>

namespace lmlib64 {

// Returns the file that this code was loaded from: absolute, with symbolic links resolved and forward slashes, in the
// system's local 8-bit encoding. Empty if the system does not state the file.
std::string libraryFile();

// The ending of a program's file name: ".exe" on Windows, otherwise empty.
extern const std::string_view programFileEnding;

}  // namespace lmlib64
