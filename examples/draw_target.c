// Draws a board of 15 x 9 corners as target.pdf.
#include <lmlib64.h>
#include <stdio.h>

int main(void) {
    int32_t result;
    lmLibSetJson(&result, "/Execute/Draw/Parameters",
                 "{\"Filename\": \"target.pdf\","
                 " \"Patterns\": [{\"Type\": \"Flexible\", \"GridSize\": [15, 9], \"GridSpacing\": 25}]}");
    lmLibSetString(&result, "/Execute/Draw/Command", "GenerateCalibrationPattern");
    lmLibWaitForType(&result, "/Execute/Draw/Command", LmLibTypeNull, 1);
    const char *error = lmLibGetString(&result, "/Execute/Draw/Result/ErrorText");
    if (result == LmLibResultOperationSucceeded) {
        fprintf(stderr, "%s\n", error);
        return 1;
    }
    printf("LmLib64 %s wrote target.pdf\n", lmLibGetString(&result, "/Path/Version"));
    return 0;
}
