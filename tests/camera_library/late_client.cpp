// A client that uses the library in the destructor of a static object. This object is made before the first call into
// the library. Except on Windows, that call registers an action for the exit. The exit runs such actions and
// destructors in reverse order, so the object is destroyed after the library's action has run. The main thread's
// thread_local objects have then been destroyed, too. The exit code is 0 if the library still works.
#include <cstdlib>
#include <cstring>

#include "camera_library/lmlib64.h"

namespace {

struct LateUser {
    ~LateUser() {
        int32_t result = -1;
        const char *text = lmLibGetString(&result, "/text");
        const bool kept = text != nullptr && std::strcmp(text, "a text that is longer than a few bytes") == 0;
        lmLibFinalize(&result);
        if (!kept || result != LmLibResultOperationSucceeded) {
            std::_Exit(1);
        }
    }
};

LateUser lateUser;

}  // namespace

int main() {
    lmLibSetString(nullptr, "/text", "a text that is longer than a few bytes");
    lmLibSetString(nullptr, "/Execute/s/Command", "GetModelInfo");
    return lmLibGetString(nullptr, "/text") == nullptr ? 2 : 0;
}
