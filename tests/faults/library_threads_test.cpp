// Tests eight threads that make random library calls at the same time, processes that exit while a command runs, and a
// process that forks while its threads use the library. The seed of a thread determines its calls, but not how the
// threads interleave. The environment variable LMCALTAB_THREAD_SECONDS sets how long the eight threads run.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "camera_library/lmlib64.h"

namespace {

using Random = std::mt19937;

const std::array<const char *, 8> paths{"/A",           "/A/Number",         "/A/Array/\\0", "/B/Text",
                                        "/Execute/One", "/Execute/One/Data", "/Execute",     "/Execute/Two/Command"};

std::size_t below(Random &random, std::size_t bound) {
    return random() % bound;
}

const char *anyPath(Random &random) {
    return paths[below(random, paths.size())];
}

void write(Random &random, std::int32_t *result) {
    using Write = void (*)(std::int32_t *, const char *);
    static const std::array<Write, 6> writes{
        [](std::int32_t *code, const char *path) { lmLibSetInt(code, path, 7); },
        [](std::int32_t *code, const char *path) {
            lmLibSetString(code, path, "a text that is too long for the short-string buffer");
        },
        [](std::int32_t *code, const char *path) {
            lmLibSetJson(code, path, R"({"Number":1,"Array":[1,{"A":null}]})");
        },
        [](std::int32_t *code, const char *path) { lmLibSetDouble(code, path, 0.5); },
        [](std::int32_t *code, const char *path) { lmLibSetNull(code, path); },
        [](std::int32_t *code, const char *path) { lmLibSetBool(code, path, 1); }};
    writes[below(random, writes.size())](result, anyPath(random));
}

void read(Random &random, std::int32_t *result) {
    using Read = const char *(*)(std::int32_t *, const char *);
    static const std::array<Read, 6> reads{
        [](std::int32_t *code, const char *path) { return lmLibGetString(code, path); },
        [](std::int32_t *code, const char * /*path*/) { return lmLibGetJson(code, "", 1, 18, 0); },
        [](std::int32_t *code, const char *path) { return lmLibGetName(code, path); },
        [](std::int32_t *code, const char * /*path*/) { return lmLibGetDebugBuffer(code); },
        [](std::int32_t *code, const char *path) {
            lmLibGetCount(code, path);
            return "";
        },
        [](std::int32_t *code, const char *path) {
            std::array<char, 64> bytes{};
            lmLibGetBinary(code, path, bytes.data(), static_cast<std::int32_t>(bytes.size()), nullptr, nullptr);
            return "";
        }};
    // A text that was returned stays readable until this thread's next call.
    if (const char *text = reads[below(random, reads.size())](result, anyPath(random)); text != nullptr) {
        EXPECT_LE(std::string(text).size(), std::size_t{1} << 24U);
    }
}

void runCommand(Random &random, std::int32_t *result) {
    const char *made = lmLibMakeUniqueItem(result, "/Execute", "");
    if (made == nullptr) {
        return;
    }
    const std::string slot = made;
    lmLibSetJson(
        result, (slot + "/Parameters").c_str(),
        R"({"ListCalTabs":true,"ImageSize":30,"Patterns":[{"Type":"Flexible","GridSize":[3,3],"GridSpacing":9}]})");
    const bool isCatalogue = below(random, 2) == 0;
    lmLibSetString(result, (slot + "/Command").c_str(), isCatalogue ? "GetModelInfo" : "GenerateCalibrationPattern");
    if (below(random, 3) != 0) {
        lmLibWaitForType(result, (slot + "/Command").c_str(), LmLibTypeNull, 1);
    }
    if (below(random, 4) != 0) {
        lmLibErase(result, slot.c_str());
    }
}

void playAtRandom(unsigned seed, std::chrono::steady_clock::time_point end, std::atomic<std::int64_t> &calls) {
    Random random(seed);
    while (std::chrono::steady_clock::now() < end) {
        std::int32_t result = 0;
        const std::size_t choice = below(random, 100);
        if (choice < 35) {
            write(random, &result);
        } else if (choice < 70) {
            read(random, &result);
        } else if (choice < 85) {
            runCommand(random, &result);
        } else if (choice < 90) {
            lmLibErase(&result, anyPath(random));
        } else if (choice < 94) {
            lmLibWaitForType(&result, anyPath(random), static_cast<std::int32_t>(below(random, 8)), 0);
        } else if (choice < 99) {
            lmLibWriteDebugMessage(&result, "a message");
        } else {
            lmLibFinalize(&result);
        }
        EXPECT_NE(result, LmLibResultInternalError);
        ++calls;
    }
}

TEST(LibraryThreads, doEverythingAtOnce) {
    const char *wanted = std::getenv("LMCALTAB_THREAD_SECONDS");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(wanted == nullptr ? 2 : std::atoi(wanted));
    std::atomic<std::int64_t> calls{0};
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 8; ++seed) {
        threads.emplace_back(playAtRandom, seed, end, std::ref(calls));
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    std::printf("%lld actions\n", static_cast<long long>(calls));
    EXPECT_GT(calls, 1000);

    std::int32_t result = -1;
    lmLibFinalize(&result);
    EXPECT_EQ(result, LmLibResultOperationSucceeded);
    EXPECT_EQ(lmLibGetCount(nullptr, ""), 1);
}

// Exits after the given time, while a command runs or is about to start.
[[noreturn]] void exitWhileCommandRuns(int microseconds) {
    lmLibSetJson(nullptr, "/Execute/S/Parameters",
                 R"({"ImageSize":1000,"Patterns":[{"Type":"Flexible","GridSize":[99,99],"GridSpacing":5}]})");
    lmLibSetString(nullptr, "/Execute/S/Command", "GenerateCalibrationPattern");
    lmLibSetString(nullptr, "/Execute/T/Command", "GetModelInfo");
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
    std::exit(0);
}

TEST(LibraryThreads, processExitsWhileCommandRuns) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (const int microseconds : {0, 50, 500, 5000, 50000}) {
        EXPECT_EXIT(exitWhileCommandRuns(microseconds), testing::ExitedWithCode(0), "");
    }
}

// Uses the library in a child process. This must not hang, whatever the parent's threads were doing at the time of the
// fork.
[[noreturn]] void useForkedLibrary() {
    constexpr unsigned secondsUntilKilled = 60;
    alarm(secondsUntilKilled);
    const bool isFresh = lmLibGetCount(nullptr, "") == 1 && lmLibGetDebugBuffer(nullptr) == nullptr;
    std::int32_t result = -1;
    lmLibSetJson(nullptr, "/Execute/S/Parameters", R"({"ImageSize":30,"Patterns":[{"GridSpacing":9}]})");
    lmLibSetString(&result, "/Execute/S/Command", "GenerateCalibrationPattern");
    lmLibWaitForType(&result, "/Execute/S/Command", LmLibTypeNull, 1);
    const bool works = result == LmLibResultOperationSucceeded &&
                       lmLibGetType(nullptr, "/Execute/S/Result/Patterns/\\0") == LmLibTypeBinary;
    lmLibSetString(nullptr, "/Execute/S/Command", "GetModelInfo");
    std::exit(isFresh && works ? 0 : 1);
}

TEST(LibraryThreads, forkedChildHasALibraryOfItsOwn) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    std::atomic<std::int64_t> calls{0};
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 3; ++seed) {
        threads.emplace_back(playAtRandom, seed, end, std::ref(calls));
    }
    int children = 0;
    int status = 0;
    while (status == 0 && std::chrono::steady_clock::now() < end) {
        const pid_t child = fork();
        if (child == 0) {
            useForkedLibrary();
        }
        waitpid(child, &status, 0);
        ++children;
    }
    EXPECT_EQ(status, 0) << "child " << children;
    for (std::thread &thread : threads) {
        thread.join();
    }
    std::printf("%d children\n", children);
}

}  // namespace
