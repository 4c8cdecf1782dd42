// What the program needs on Windows before it starts.
#pragma once

// Call it once, before runProgram.
//
// - Windows are drawn at the scale that the user has set for the screen.
// - File dialogs are the toolkit's. The system's dialog adds the ending of the selected filter to the name that the
// user
//   types, so the name that was typed would be unknown.
// - A failure that ends the program is shown in a box first, because nobody sees the standard error stream.
void prepareProgram();
