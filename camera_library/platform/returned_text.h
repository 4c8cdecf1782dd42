// Holds the text that the interface last returned to each thread. Each system has its own source file.
#pragma once

#include <string>

namespace lmlib64 {

// Returns the string of the calling thread. The string is freed when the thread ends; on Windows, the strings of all
// threads are also freed when the library is unloaded. Throws std::bad_alloc.
std::string &returnedText();

}  // namespace lmlib64
