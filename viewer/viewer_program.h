// Runs the whole program LmView; only its entry point is elsewhere.
#pragma once

// Returns the exit code: 0, or 2 for unknown options.
int runViewer(int argc, char **argv);
