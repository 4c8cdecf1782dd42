#include <cstdlib>

#include "camera_library/platform/process_exit.h"

namespace lmlib64 {

void callAtExit(void (*action)()) {
    // The library registers its action when one of its functions is called for the first time. At exit, registered
    // actions and the destructors of static objects run in reverse order: what was registered or constructed last comes
    // first. So static objects that were constructed before the registration still exist when the action runs. If the
    // action cannot be registered, the process exits without it.
    static_cast<void>(std::atexit(action));
}

}  // namespace lmlib64
