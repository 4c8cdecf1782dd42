#include <cstdlib>

#include "camera_library/platform/process_exit.h"

namespace lmlib64 {

void callAtExit(void (*action)()) {
    // The library registers its action at its first call. The process runs such actions in the reverse order of their
    // registration, so everything that was made before the first call still exists when the action runs. If the action
    // cannot be registered, the process exits without it.
    static_cast<void>(std::atexit(action));
}

}  // namespace lmlib64
