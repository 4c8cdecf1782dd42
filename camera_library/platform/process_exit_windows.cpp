#include "camera_library/platform/process_exit.h"

namespace lmlib64 {

// The system ends a process's other threads before any library learns of the exit, so there is nothing to wait for.
// Besides, waiting for a thread while a library is unloaded would never end.
void callAtExit(void (* /*action*/)()) {}

}  // namespace lmlib64
