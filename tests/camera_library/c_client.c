// A client in plain C99. It includes only the library's header, so it compiles only if this header needs no other
// header before it. The client exits without calling lmLibFinalize, because clients are allowed to do so. The exit code
// is 0 if the library drew a pattern.
#include "camera_library/lmlib64.h"

int main(void) {
    int32_t result = LmLibResultInternalError;
    lmLibSetJson(&result, "/Execute/S/Parameters", "{\"ImageSize\":200,\"Patterns\":[{\"GridSpacing\":12}]}");
    lmLibSetString(&result, "/Execute/S/Command", "GenerateCalibrationPattern");
    lmLibWaitForType(&result, "/Execute/S/Command", LmLibTypeNull, 1);
    return result == LmLibResultOperationSucceeded &&
                   lmLibGetType(&result, "/Execute/S/Result/Patterns/\\0") == LmLibTypeBinary
               ? 0
               : 3;
}
