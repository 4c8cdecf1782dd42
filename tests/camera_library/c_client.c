// A client in plain C99, which includes the header first and so shows that the header needs no other. It returns from
// main() without lmLibFinalize, while a command runs and others are queued; the process must end normally.
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
