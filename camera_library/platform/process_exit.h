// What the library does when the process ends without lmLibFinalize; one source file per system.
#pragma once

namespace lmlib64 {

// Has the action called when the process exits or the library is unloaded, where the library's thread then
// still runs and what it uses is still there. Must be called from within the library.
void callAtExit(void (*action)());

}  // namespace lmlib64
