#include <cstdlib>

#include "camera_library/platform/process_exit.h"

namespace lmlib64 {

void callAtExit(void (*action)()) {
    // Handlers run in reverse order: everything that was made before the library's first call outlives this.
    // Where no handler can be had, the exit does without.
    static_cast<void>(std::atexit(action));
}

}  // namespace lmlib64
