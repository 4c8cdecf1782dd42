// Where the toolkit's and the program's diagnostics go: warnings and worse, one line each, to the standard error
// stream. Debug and info messages are dropped. Nothing is kept and nothing is written to a file; a fatal message
// ends the process in the toolkit, after its line is out.
#pragma once

// Makes this the process's message handler. Messages may then come from any thread; every line goes out whole.
void installMessageHandler();
