// What the library does when the process ends without lmLibFinalize; one source file per system.
#pragma once

namespace lmlib64 {

// Registers an action that is called when the process exits or the library is unloaded, while the library's thread
// still runs and everything it uses still exists. Must be called from within the library.
void callAtExit(void (*action)());

}  // namespace lmlib64
