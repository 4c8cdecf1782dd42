#include <windows.h>

#include <memory>
#include <new>

#include "camera_library/platform/returned_text.h"

namespace lmlib64 {

// The strings are not thread_local: g++ for Windows frees the memory of thread_local objects before it calls their
// destructors.
std::string &returnedText() {
    static DWORD slot = FlsAlloc([](void *text) { delete static_cast<std::string *>(text); });
    struct Release {
        // Frees the strings of all threads, when the library is unloaded.
        ~Release() {
            FlsFree(slot);
            slot = FLS_OUT_OF_INDEXES;
        }
    };
    static const Release release;
    auto *text = static_cast<std::string *>(FlsGetValue(slot));
    if (text == nullptr) {
        auto made = std::make_unique<std::string>();
        if (FlsSetValue(slot, made.get()) == 0) {
            throw std::bad_alloc();
        }
        text = made.release();
    }
    return *text;
}

}  // namespace lmlib64
