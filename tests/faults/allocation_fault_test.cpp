// Every allocation of the library fails once, and from some point on all of them do: a result code or the
// command's "ErrorSymbol" says so, the tree and the files are as they were, nothing leaks, and the library works on.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "camera_library/lmlib64.h"
#include "tests/camera_library/temporary_folder.h"
#include "tests/faults/failing_allocation.h"
#include "tests/faults/library_session.h"

namespace {

using failing_allocation::Failing;
using namespace library_session;

// What is wrong when the n-th allocation of a session fails; empty where all is as it should be.
template <typename MakeSession>
std::string complaintAbout(std::int64_t call, Failing failing, MakeSession makeSession, bool &hasFailed) {
    std::string complaint;
    {
        auto session = makeSession();
        failing_allocation::arm(call, failing);
        session.play();
        hasFailed = failing_allocation::disarm();
        session.check();
        lmLibFinalize(nullptr);
        complaint = session.complaint;
    }
    {
        auto session = makeSession();
        session.play();
        session.check();
        complaint += session.complaint.empty() ? "" : "afterwards: " + session.complaint;
    }
    lmLibFinalize(nullptr);
    return complaint;
}

// Lets the n-th allocation of the session fail for every n, until there are not that many. Returns how many.
template <typename MakeSession>
std::int64_t sweep(Failing failing, MakeSession makeSession) {
    bool hasFailed = true;
    complaintAbout(0, failing, makeSession, hasFailed);
    const std::int64_t blocks = failing_allocation::blocksInUse();
    std::int64_t call = 0;
    do {
        ++call;
        const std::string complaint = complaintAbout(call, failing, makeSession, hasFailed);
        const std::int64_t blocksAfter = failing_allocation::blocksInUse() - (complaint.empty() ? 0 : 1);
        if (!complaint.empty() || blocksAfter != blocks) {
            ADD_FAILURE() << "allocation " << call << ": " << complaint << blocksAfter - blocks << " blocks are left";
            break;
        }
    } while (hasFailed);
    std::printf("%d allocations\n", static_cast<int>(call - 1));
    EXPECT_GT(call, 50);
    return call - 1;
}

class AllocationFault : public testing::TestWithParam<Failing> {};

INSTANTIATE_TEST_SUITE_P(All, AllocationFault, testing::Values(Failing::Once, Failing::FromThenOn),
                         [](const auto &test) { return test.param == Failing::Once ? "once" : "fromThenOn"; });

TEST_P(AllocationFault, treeStaysAsItWas) {
    sweep(GetParam(), [] { return TreeSession(); });
}

TEST_P(AllocationFault, catalogueSaysWhy) {
    sweep(GetParam(), [] { return CommandSession("GetModelInfo", R"({"ListCalTabs":true})"); });
}

TEST_P(AllocationFault, previewSaysWhy) {
    sweep(GetParam(), [] {
        return CommandSession(
            "GenerateCalibrationPattern",
            R"({"ImageSize":60,"Patterns":[{"Type":"SingleCustom","GridSpacing":12,"Thickness":0}]})");
    });
}

TEST_P(AllocationFault, saveAsJsonKeepsTheOldFile) {
    const TemporaryFolder folder;
    sweep(GetParam(), [&] { return SaveSession(folder.file("pattern.json")); });
    EXPECT_EQ(folder.entryCount(), 1U);
}

// Plays on in a process of its own from the n-th allocation until one of them ends the process or, with 0, none
// is left. Returns the one that did.
std::int64_t sweepPdfSaves(std::int64_t call, const std::string &fileName, int complaints) {
    constexpr std::int64_t everyUpTo = 300;
    const std::int64_t step = std::getenv("LMCALTAB_EVERY_ALLOCATION") == nullptr ? 5 : 1;
    bool hasFailed = true;
    for (; hasFailed; call += call < everyUpTo ? 1 : step) {
        if (write(complaints, &call, sizeof call) != sizeof call) {
            _exit(2);
        }
        const std::string complaint = complaintAbout(
            call, Failing::Once, [&] { return SaveSession(fileName); }, hasFailed);
        if (!complaint.empty()) {
            std::fprintf(stderr, "allocation %d: %s\n", static_cast<int>(call), complaint.c_str());
            _exit(1);
        }
    }
    _exit(0);
}

// qpdf's writer ends the process where one of its destructors gets no memory, which the library cannot prevent; it
// makes sure before that there is some. Everywhere else the failure is reported, and the old file stays in any case.
TEST(AllocationFault, saveAsPdfKeepsTheOldFile) {
    const TemporaryFolder folder;
    const std::string fileName = folder.file("pattern.pdf");
    lmLibFinalize(nullptr);
    std::int64_t call = 1;
    int runs = 0;
    int ends = 0;
    int status = 0;
    do {
        writeBytes(fileName, oldContents);
        int calls[2] = {};
        ASSERT_EQ(pipe(calls), 0);
        const pid_t child = fork();
        if (child == 0) {
            const rlimit noCore{0, 0};
            setrlimit(RLIMIT_CORE, &noCore);
            close(STDERR_FILENO);
            sweepPdfSaves(call, fileName, calls[1]);
        }
        close(calls[1]);
        while (read(calls[0], &call, sizeof call) == sizeof call) {
            ++runs;
        }
        close(calls[0]);
        ASSERT_EQ(waitpid(child, &status, 0), child);
        if (WIFSIGNALED(status)) {
            ++ends;
            EXPECT_EQ(WTERMSIG(status), SIGABRT) << "allocation " << call;
            EXPECT_EQ(readBytes(fileName), oldContents) << "allocation " << call;
            ++call;
        }
        EXPECT_EQ(folder.entryCount(), 1U) << "allocation " << call;
    } while (WIFSIGNALED(status) && !HasFailure());
    EXPECT_EQ(WEXITSTATUS(status), 0) << "allocation " << call;
    std::printf("%d of %d allocations tried, %d of them end the process\n", runs, static_cast<int>(call), ends);
    EXPECT_GT(call, 1000);
    EXPECT_LT(ends, runs / 20);
}

}  // namespace
