#include "camera_library/platform/process_fork.h"

namespace lmlib64 {

// Windows has no fork().
void callInForkedChild(void (* /*action*/)()) {}

}  // namespace lmlib64
