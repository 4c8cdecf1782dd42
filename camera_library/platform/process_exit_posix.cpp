#include <cstdlib>

#include "camera_library/platform/process_exit.h"

namespace lmlib64 {

void callAtExit(void (*action)()) {
    // Handlers run in reverse order, so everything that was made before the library's first call still exists when the
    // handler runs. If the handler cannot be registered, the process exits without it.
    static_cast<void>(std::atexit(action));
}

}  // namespace lmlib64
