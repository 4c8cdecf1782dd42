// Whether somebody watches.
#pragma once

// True if standard error is a terminal.
bool isErrorTerminal();
