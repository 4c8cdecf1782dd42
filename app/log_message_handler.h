// Writes the diagnostics of the toolkit and the program to the standard error stream. Each warning, critical or fatal
// message is one line, or several if its text has line breaks, and is followed by an empty line. Debug and info
// messages are dropped, and so is the toolkit's harmless warning that it cannot sort texts by the numbers in them. No
// message is stored or written to a file. After a fatal message has been written, the toolkit ends the process.
#pragma once

// Installs the message handler of the process. Messages may come from any thread; their lines do not mix.
void installMessageHandler();
