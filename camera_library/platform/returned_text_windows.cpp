#include <windows.h>

#include <memory>
#include <new>

#include "camera_library/platform/returned_text.h"

namespace lmlib64 {

namespace {

// Asks the system's loader. Its function is in no import library, so it is looked up.
bool isProcessEnding() {
    const HMODULE loader = GetModuleHandleW(L"ntdll.dll");
    const FARPROC found = loader == nullptr ? nullptr : GetProcAddress(loader, "RtlDllShutdownInProgress");
    return found != nullptr && reinterpret_cast<BOOLEAN(WINAPI *)()>(reinterpret_cast<void *>(found))() != FALSE;
}

}  // namespace

// The strings are not thread_local: g++ for Windows frees the memory of thread_local objects before it calls their
// destructors.
std::string &returnedText() {
    static DWORD slot = FlsAlloc([](void *text) { delete static_cast<std::string *>(text); });
    struct Release {
        // Frees the strings of all threads if the library is unloaded. At the end of the process, the strings stay,
        // because a thread may have been ended in the middle of a change of its string.
        ~Release() {
            if (!isProcessEnding()) {
                FlsFree(slot);
                slot = FLS_OUT_OF_INDEXES;
            }
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
