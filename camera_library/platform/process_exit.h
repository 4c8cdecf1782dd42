// Lets the library end its thread when the process ends without lmLibFinalize. Each system has its own source file.
#pragma once

namespace lmlib64 {

// Registers an action that is called when the process exits or the library is unloaded. At that time, the library's
// thread still runs and everything that it uses still exists. On Windows, the function does nothing, because there the
// exit ends the thread first. Call this only from code that is linked into the library, because the action runs when
// the binary that registered it is unloaded.
void callAtExit(void (*action)());

}  // namespace lmlib64
