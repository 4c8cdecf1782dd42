#include "camera_library/platform/process_fork.h"

namespace lmlib64 {

// A process cannot be copied on this system.
void callInForkedChild(void (* /*action*/)()) {}

}  // namespace lmlib64
