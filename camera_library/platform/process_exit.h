// Lets the library end its thread when the process ends without lmLibFinalize. Each system has its own source file.
#pragma once

namespace lmlib64 {

// Registers an action that is called when the process exits or the library is unloaded, while the library's thread
// still runs and everything it uses still exists. Must be called from within the library.
void callAtExit(void (*action)());

}  // namespace lmlib64
