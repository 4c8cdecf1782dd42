// What a command-line program writes is the same on every system, byte for byte.
#pragma once

namespace shell {

// From now on, lines end with a line feed alone, and until the program ends, a terminal shows text in the local 8-bit
// encoding. Call it once, before anything is read or written. Does nothing on POSIX systems, where both always hold.
void prepareStandardStreams();

}  // namespace shell
