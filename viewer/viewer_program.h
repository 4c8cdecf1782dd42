// Runs the whole program LmView; only its entry point is elsewhere.
#pragma once

// Returns the exit code: 0, 1 if standard output cannot be written, or 2 for unknown options.
int runViewer(int argc, char **argv);
