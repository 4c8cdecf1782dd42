// Makes the output of a command-line program the same on every system, byte for byte.
#pragma once

#include <string>

namespace shell {

// Writes the text on standard error in one piece. Programs use this function rather than std::cerr, which stays silent
// on Windows: there, Ceres Solver is built with a log that writes every step of a solve to it.
void writeError(const std::string &text);

// From now on, lines end with a line feed alone, and a terminal shows text in the local 8-bit encoding until the
// program ends. Call it once, before anything is read or written. On POSIX systems it does nothing, because both always
// hold there.
void prepareStandardStreams();

}  // namespace shell
