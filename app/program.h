// Runs the whole program. The entry point, which is a separate file for each platform, calls runProgram once, on the
// main thread.
#pragma once

// Passes the arguments to Qt, shows the window and returns the exit code of the event loop. It catches no exception, so
// an exception while the window is built or the library is finalised ends the process.
int runProgram(int argc, char **argv);
