// Tests saving with limited memory. The limits range from no additional memory to more than enough. Each save either
// writes the whole file, or reports that memory ran out and leaves the old file. Each save has its own process, so that
// it cannot use memory that an earlier one has freed.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

#include "camera_library/lmlib64.h"
#include "camera_library/output/file_formats.h"
#include "tests/camera_library/temporary_folder.h"

namespace {

constexpr rlim_t plentyOfMemory = rlim_t(1) << 30U;

// NoCommand: the memory was too small even for starting the command.
enum Outcome { Saved = 0, OutOfMemory = 1, NoCommand = 2, Other = 3 };

void allowMoreMemory(rlim_t bytes) {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t limit = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + bytes;
    const rlimit addressSpace{limit, limit};
    setrlimit(RLIMIT_AS, &addressSpace);
}

Outcome saveWith(rlim_t bytes, const char *fileName) {
    std::int32_t result = 0;
    lmLibSetString(&result, "/Execute/S/Parameters/Filename", fileName);
    lmLibSetJson(&result, "/Execute/S/Parameters/Patterns",
                 R"([{"Type":"Flexible","GridSize":[99,99],"GridSpacing":5}])");
    allowMoreMemory(bytes);
    lmLibSetString(&result, "/Execute/S/Command", "GenerateCalibrationPattern");
    if (result != LmLibResultOperationSucceeded) {
        return result == LmLibResultInternalError ? NoCommand : Other;
    }
    lmLibWaitForType(&result, "/Execute/S/Command", LmLibTypeNull, 1);
    const char *symbol = lmLibGetString(nullptr, "/Execute/S/Result/ErrorSymbol");
    if (symbol == nullptr) {
        return Saved;
    }
    return std::strcmp(symbol, "OutOfMemory") == 0 ? OutOfMemory : Other;
}

int play(rlim_t bytes, const std::string &fileName) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(saveWith(bytes, fileName.c_str()));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(MemoryLimit, savesTheWholeFileOrReportsThatMemoryRanOut) {
    const TemporaryFolder folder;
    for (const lmlib64::FileFormat &format : lmlib64::FileFormats()) {
        const std::string name = "pattern" + std::string(format.ending);
        const std::string fileName = folder.file(name);
        ASSERT_EQ(play(plentyOfMemory, fileName), Saved) << name;
        const std::string whole = readBytes(fileName);
        int outcomes[4] = {};
        for (rlim_t kibibytes = 0; kibibytes < 24000; kibibytes += 512) {
            writeBytes(fileName, "old");
            const int outcome = play(kibibytes << 10U, fileName);
            ASSERT_GE(outcome, 0) << name << " with " << kibibytes << " KiB";
            ASSERT_NE(outcome, Other) << name << " with " << kibibytes << " KiB";
            ASSERT_TRUE(readBytes(fileName) == (outcome == Saved ? whole : "old"))
                << name << " with " << kibibytes << " KiB";
            ++outcomes[outcome];
        }
        std::printf(
            "%s: %d processes saved the file, %d had too little memory to save it, %d had too little memory to start "
            "the command\n",
            name.c_str(), outcomes[Saved], outcomes[OutOfMemory], outcomes[NoCommand]);
        EXPECT_GT(outcomes[Saved], 0);
        EXPECT_GT(outcomes[OutOfMemory], 0);
    }
    EXPECT_EQ(folder.entryCount(),
              static_cast<std::size_t>(lmlib64::FileFormats().end() - lmlib64::FileFormats().begin()));
}

}  // namespace
