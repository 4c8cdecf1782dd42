// Makes the output of a command-line program the same on every system, byte for byte.
#pragma once

#include <string>

namespace shell {

// Writes the text to standard error in one piece. Programs use this function instead of std::cerr, because
// prepareStandardStreams silences std::cerr on Windows. There, the log of Ceres Solver would write every step of a
// solve to std::cerr.
void writeError(const std::string &text);

// After this call, lines end with a line feed alone. Until the program ends, a terminal takes the output for text in
// the local 8-bit encoding. Call it once, before anything is read or written. On POSIX systems it does nothing, because
// both statements always hold there.
void prepareStandardStreams();

}  // namespace shell
