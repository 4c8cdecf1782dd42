// Makes the output of a command-line program the same on every system, byte for byte.
#pragma once

namespace shell {

// From now on, lines end with a line feed alone, and a terminal shows text in the local 8-bit encoding until the
// program ends. Call it once, before anything is read or written. On POSIX systems it does nothing, because both always
// hold there.
void prepareStandardStreams();

}  // namespace shell
