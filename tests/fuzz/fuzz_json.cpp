// Fuzzes JSON texts. A text is either refused and changes nothing, or it is accepted and makes a node. The JSON text of
// that node must then make the same node again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "camera_library/lmlib64.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

std::string written(bool pretty) {
    std::int32_t result = 0;
    const char *json = lmLibGetJson(&result, "/J", pretty ? 1 : 0, 0, 1);
    require(result == LmLibResultOperationSucceeded && json != nullptr);
    return json;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    std::int32_t result = 0;
    lmLibSetString(&result, "/J", "before");
    lmLibSetJson(&result, "/J", text.c_str());
    if (result != LmLibResultOperationSucceeded) {
        require(result == LmLibResultCouldNotInterpretJsonText || result == LmLibResultNestingLimitReached);
        require(written(false) == "\"before\"");
        return 0;
    }
    const std::string compact = written(false);
    for (const std::string &again : {compact, written(true)}) {
        lmLibSetJson(&result, "/J", again.c_str());
        require(result == LmLibResultOperationSucceeded && written(false) == compact);
    }
    return 0;
}
