#include "lmlib/temporary_slot.h"

#include <cstdint>
#include <utility>

#include "camera_library/lmlib64.h"
#include "lmlib/lm_lib_exception.h"
#include "lmlib/result_check.h"

TemporarySlot::TemporarySlot(std::string slotPath) : path(std::move(slotPath)) {}

TemporarySlot::~TemporarySlot() {
    release();
}

void TemporarySlot::release() noexcept {
    if (path.empty()) {
        return;
    }
    std::int32_t result = LmLibResultOperationSucceeded;
    lmLibErase(&result, path.c_str());
    if (result != LmLibResultItemInexistent) {
        try {
            checkResult(path, result);
        } catch (const LmLibException &) {
            // The exception's constructor has written the failure to the debug log, which is enough here.
        }
    }
    path.clear();
}
