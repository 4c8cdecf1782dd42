// Makes the output of a command-line program the same on every system, byte for byte.
#pragma once

#include <string>

namespace shell {

// Writes the text to standard error in one piece. Programs use this function instead of std::cerr, because
// prepareStandardStreams silences std::cerr on Windows. Otherwise, the log of Ceres Solver would write every step of a
// solve to std::cerr there.
void writeError(const std::string &text);

// Call this function once, before anything is read or written. After the call, lines end with a line feed alone, and a
// terminal shows the output as text in the local 8-bit encoding until the program ends. On POSIX systems, both are
// always the case, so the function does nothing.
void prepareStandardStreams();

}  // namespace shell
