#include "camera_library/platform/returned_text.h"

namespace lmlib64 {

// If the destructor of a static object calls this function after the thread's string has been freed, a new string is
// made.
std::string &returnedText() {
    struct Release {
        std::string **text = nullptr;
        ~Release() {
            if (text != nullptr) {
                delete *text;
                *text = nullptr;
            }
        }
    };
    static thread_local std::string *text = nullptr;
    if (text == nullptr) {
        auto *made = new std::string();
        text = made;
        static thread_local Release release;
        release.text = &text;
    }
    return *text;
}

}  // namespace lmlib64
