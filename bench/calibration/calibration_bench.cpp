// calibration_bench [sigmas] [time] [partial] [bad] [truth] [public FOLDER]: prints those tables of docs/calibration.md
// that the arguments name. Without arguments, it prints all tables except the one of `public`. FOLDER has the
// photographs left01.jpg, right01.jpg ... that come with OpenCV's documentation; `public FOLDER` must come last. The
// tables of `truth` and `public` exist only if the reader is built too. Exits with 1 if a goal is missed.
#include <cstring>

#include "bench/calibration/goals.h"

int main(int count, char **arguments) {
    using namespace calibration_bench;
    const auto isWanted = [&](const char *name) {
        for (int i = 1; i < count; i++) {
            if (std::strcmp(arguments[i], name) == 0) {
                return true;
            }
        }
        return count == 1;
    };
    bool isMet = true;
    if (isWanted("sigmas")) {
        isMet = measureTrueSigmas(300) && isMet;
    }
    if (isWanted("time")) {
        isMet = measureTime() && isMet;
    }
    if (isWanted("partial")) {
        isMet = measurePartialViews() && isMet;
    }
    if (isWanted("bad")) {
        isMet = measureBadInput() && isMet;
    }
#ifdef LMCALTAB_HAS_READER
    if (isWanted("truth")) {
        isMet = measureSyntheticTruth() && isMet;
    }
    if (count > 2 && std::strcmp(arguments[count - 2], "public") == 0) {
        isMet = measurePublicPhotographs(arguments[count - 1]) && isMet;
    }
#endif
    return isMet ? 0 : 1;
}
