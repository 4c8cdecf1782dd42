#include <pthread.h>

#include <new>

#include "camera_library/platform/process_fork.h"

namespace lmlib64 {

void callInForkedChild(void (*action)()) {
    if (pthread_atfork(nullptr, nullptr, action) != 0) {
        throw std::bad_alloc();
    }
}

}  // namespace lmlib64
