#include "lmlib/result_check.h"

#include "camera_library/lmlib64.h"
#include "lmlib/lm_lib_exception.h"

void checkResult(const std::string &itemPath, std::int32_t code) {
    if (code != LmLibResultOperationSucceeded) {
        throw LmLibException(itemPath, code, nullptr);
    }
}
