// Prepares the toolkit and the process on Windows.
#pragma once

// Call it once, before runProgram.
//
// - The windows of the program are drawn at the scale that the user has set for the screen.
// - File dialogs are those of the toolkit. The system's dialog would add the ending of the selected filter to the name
//   that the user types, so the program would not know the typed name.
// - If an LmLibException or a std::exception ends the program, its text is first shown in a box, because nobody sees
//   the standard error stream.
void prepareProgram();
