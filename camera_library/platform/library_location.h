// Where the code of this library was loaded from; one source file per system.
#pragma once

#include <string>
#include <string_view>

namespace lmlib64 {

// The file this code was loaded from: absolute, symbolic links resolved, with forward slashes, in the
// system's local 8-bit encoding. Empty where the system does not tell.
std::string libraryFile();

// What the name of a program's file ends in.
extern const std::string_view programFileEnding;

}  // namespace lmlib64
