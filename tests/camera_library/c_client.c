/*
 * A client in plain C: the header stands alone in C99. It leaves with a command running and others queued,
 * and without lmLibFinalize, which must end the process as usual.
 */
#include "camera_library/lmlib64.h"

#include <stdio.h>

int main(void) {
    int32_t result = LmLibResultInternalError;
    char path[64];
    int slot;
    for (slot = 0; slot < 8; ++slot) {
        snprintf(path, sizeof path, "/Execute/%d/Parameters", slot);
        lmLibSetJson(&result, path, "{\"ImageSize\":2000,\"Patterns\":[{\"GridSpacing\":12}]}");
        if (result != LmLibResultOperationSucceeded) {
            return 1;
        }
        snprintf(path, sizeof path, "/Execute/%d/Command", slot);
        lmLibSetString(&result, path, "GenerateCalibrationPattern");
        if (result != LmLibResultOperationSucceeded) {
            return 2;
        }
    }
    lmLibWaitForType(&result, "/Execute/0/Command", LmLibTypeNull, 1);
    return result == LmLibResultOperationSucceeded &&
                   lmLibGetType(&result, "/Execute/0/Result/Patterns/\\0") == LmLibTypeBinary
               ? 0
               : 3;
}
