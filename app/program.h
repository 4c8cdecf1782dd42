// The program from its first message to its exit code. The platform's entry point, which is a file of its own,
// calls it once, on the main thread.
#pragma once

// The arguments go to the toolkit. Returns the event loop's result. Catches nothing: an exception from building
// the window or from finalising the library ends the process.
int runProgram(int argc, char **argv);
