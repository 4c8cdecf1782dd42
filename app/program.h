// Runs the whole program. The entry point, which is a separate file for each platform, calls runProgram once, on the
// main thread.
#pragma once

// Passes the arguments to the toolkit and returns the result of the event loop. It catches no exception, so an
// exception from building the window or finalising the library ends the process.
int runProgram(int argc, char **argv);
