// Runs the whole program LmView; only its entry point is elsewhere.
#pragma once

// Returns the exit code: 0 on success, 1 if standard output cannot be written, or 2 if an option is unknown.
int runViewer(int argc, char **argv);
