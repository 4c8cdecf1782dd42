// The whole program LmView except its entry point.
#pragma once

// Returns the exit code: 0, or 2 for arguments that it does not know.
int runViewer(int argc, char **argv);
