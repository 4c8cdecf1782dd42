// Every allocation of the library fails once, and from some point on all of them do: a result code or the
// command's "ErrorSymbol" says so, the tree and the files are as they were, nothing leaks, and the library works on.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "camera_library/lmlib64.h"
#include "camera_library/output/file_formats.h"
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

TEST_P(AllocationFault, saveKeepsTheOldFile) {
    for (const lmlib64::FileFormat &format : lmlib64::FileFormats()) {
        const TemporaryFolder folder;
        const std::string name = "pattern" + std::string(format.ending);
        std::string wholeContents;
        sweep(GetParam(), [&] { return SaveSession(folder.file(name), wholeContents); });
        EXPECT_EQ(folder.entryCount(), 1U) << name;
    }
}

}  // namespace
