// Lets each allocation of the library fail, once by itself and once together with all later ones. If a call of the
// library then fails, its result code must be right, and the tree must be unchanged. If a command fails, its
// "ErrorSymbol" must be right, and the file that it would replace must be unchanged. No memory may leak, and the
// library must still work.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "camera_library/lmlib64.h"
#include "camera_library/output/file_formats.h"
#include "tests/camera_library/temporary_folder.h"
#include "tests/faults/failing_allocation.h"

namespace {

using failing_allocation::Failing;
using failing_allocation::Pause;

// Repeats a session and lets its n-th allocation fail, for n from 1 to the number of its allocations. A session calls
// the library and returns a description of everything that the library did wrong, or an empty string. Outside the
// library, the session may allocate only during a Pause.
template <typename Session>
void sweep(Failing failing, Session session) {
    EXPECT_EQ(session(), "");
    lmLibFinalize(nullptr);
    const std::int64_t blocks = failing_allocation::blocksInUse();
    bool hasFailed = true;
    std::int64_t call = 0;
    while (hasFailed && !testing::Test::HasFailure()) {
        failing_allocation::arm(++call, failing);
        std::string complaint = session();
        hasFailed = failing_allocation::disarm();
        lmLibFinalize(nullptr);
        EXPECT_EQ(complaint, "") << "allocation " << call;
        EXPECT_EQ(session(), "") << "after the failure of allocation " << call;
        lmLibFinalize(nullptr);
        std::string().swap(complaint);
        EXPECT_EQ(failing_allocation::blocksInUse(), blocks) << "blocks in use after allocation " << call;
    }
    std::printf("%d allocations\n", static_cast<int>(call - 1));
    EXPECT_GT(call, 50);
}

std::string jsonOf(const char *path) {
    std::int32_t result = 0;
    const char *json = lmLibGetJson(&result, path, 0, 0, 1);
    return json == nullptr ? "code " + std::to_string(result) : json;
}

const char *const longText = "a text that is too long to be kept within a string object itself";

using Step = void (*)(std::int32_t *);
const Step treeSteps[]{
    [](std::int32_t *result) { lmLibSetString(result, "/A/Some/Texts", longText); },
    [](std::int32_t *result) { lmLibSetInt(result, "/A/Array/\\0/Number", 1); },
    [](std::int32_t *result) { lmLibSetNull(result, "/A/An object with a long name/Null"); },
    [](std::int32_t *result) {
        lmLibSetJson(result, "/B", R"({"A name that is not short":[1,2.5,"a text that is not short",{"C":null}]})");
    },
    [](std::int32_t *result) {
        lmLibSetJson(result, "/C", R"({"A name that is not short":["a text that is not short",)");
        *result = *result == LmLibResultCouldNotInterpretJsonText ? 0 : *result;  // expected: the text is incomplete
    },
    [](std::int32_t *result) { lmLibSetString(result, "/A/Array", longText); },
    [](std::int32_t *result) { lmLibMakeUniqueItem(result, "/Execute", "a longer base name"); },
    [](std::int32_t *result) { lmLibGetString(result, "/A/Some/Texts"); },
    [](std::int32_t *result) { lmLibGetName(result, "/A/An object with a long name"); },
    [](std::int32_t *result) { lmLibGetJson(result, "", 1, 18, 0); },
    [](std::int32_t *result) { lmLibWaitForType(result, "/A", LmLibTypeObject, 1); },
    [](std::int32_t *result) { lmLibWriteDebugMessage(result, longText); },
    [](std::int32_t *result) { lmLibGetDebugBuffer(result); },
    [](std::int32_t *result) { lmLibErase(result, "/A/Some"); },
    [](std::int32_t *result) { lmLibFinalize(result); },
};

// Runs all steps, even after one has failed, and checks that a failing step leaves the tree unchanged.
std::string playTreeSteps() {
    std::string complaint;
    bool hasFailed = false;
    int number = 0;
    for (const Step step : treeSteps) {
        std::string before;
        {
            const Pause pause;
            before = jsonOf("");
        }
        std::int32_t result = -1;
        step(&result);
        const Pause pause;
        ++number;
        // After a step has failed, the result codes of later steps are not checked, because these steps may need nodes
        // that the failed step did not write.
        if (result != LmLibResultOperationSucceeded && result != LmLibResultInternalError && !hasFailed) {
            complaint += "step " + std::to_string(number) + ": code " + std::to_string(result) + "\n";
        }
        hasFailed = hasFailed || result != LmLibResultOperationSucceeded;
        if (result != LmLibResultOperationSucceeded && jsonOf("") != before) {
            complaint += "step " + std::to_string(number) + " changed " + before + " to " + jsonOf("") + "\n";
        }
    }
    return complaint;
}

struct Command {
    std::string name;
    std::string parameters;
};

// Returns true if the command succeeded. Adds a complaint if it failed without reporting that memory ran out.
bool playCommand(const Command &command, std::string &complaint) {
    std::int32_t written = -1;
    std::int32_t started = -1;
    lmLibSetJson(&written, "/Execute/Slot/Parameters", command.parameters.c_str());
    lmLibSetString(&started, "/Execute/Slot/Command", command.name.c_str());
    lmLibWaitForType(nullptr, "/Execute/Slot/Command", LmLibTypeNull, 1);
    const Pause pause;
    if (started != LmLibResultOperationSucceeded) {
        const bool isAbsent = lmLibGetType(nullptr, "/Execute/Slot/Command") == LmLibTypeAbsent;
        complaint += started == LmLibResultInternalError && isAbsent ? "" : "code " + std::to_string(started);
        return false;
    }
    lmLibWaitForType(nullptr, "/Execute/Slot/Command", LmLibTypeNull, 1);  // the first wait may have failed
    const std::string result = jsonOf("/Execute/Slot/Result");
    if (result.find("ErrorSymbol") == std::string::npos) {
        return true;
    }
    const bool saysWhy = result.find(R"("ErrorSymbol":"OutOfMemory")") != std::string::npos &&
                         result.find("There is not enough memory") != std::string::npos &&
                         result.find(R"("Command":")" + command.name + '"') != std::string::npos;
    // If the parameters could not be written, the command rightly reports that they are missing.
    complaint += saysWhy || written != LmLibResultOperationSucceeded ? "" : result;
    return false;
}

class AllocationFault : public testing::TestWithParam<Failing> {};

INSTANTIATE_TEST_SUITE_P(All, AllocationFault, testing::Values(Failing::Once, Failing::FromThenOn),
                         [](const auto &test) { return test.param == Failing::Once ? "once" : "fromThenOn"; });

TEST_P(AllocationFault, failingCallLeavesTheTreeUnchanged) {
    sweep(GetParam(), playTreeSteps);
}

TEST_P(AllocationFault, failingCommandReportsThatMemoryRanOut) {
    const Command commands[]{
        {"GetModelInfo", R"({"ListCalTabs":true})"},
        {"GenerateCalibrationPattern",
         R"({"ImageSize":60,"Patterns":[{"Type":"SingleCustom","GridSpacing":12,"Thickness":0}]})"}};
    for (const Command &command : commands) {
        sweep(GetParam(), [&command] {
            std::string complaint;
            playCommand(command, complaint);
            return complaint;
        });
    }
}

TEST_P(AllocationFault, failingSaveKeepsTheOldFile) {
    const std::string oldContents = "the file of an earlier save";
    for (const lmlib64::FileFormat &format : lmlib64::FileFormats()) {
        const TemporaryFolder folder;
        const std::string file = folder.file("pattern" + std::string(format.ending));
        const Command command{"GenerateCalibrationPattern",
                              R"({"Resolution":25,"Filename":")" + file +
                                  R"(","Patterns":[{"Type":"Flexible","GridSize":[5,4],"GridSpacing":10.0}]})"};
        std::string failure;
        ASSERT_TRUE(playCommand(command, failure)) << failure;
        const std::string whole = readBytes(file);
        lmLibFinalize(nullptr);
        sweep(GetParam(), [&] {
            {
                const Pause pause;
                writeBytes(file, oldContents);
            }
            std::string complaint;
            const bool isSaved = playCommand(command, complaint);
            const Pause pause;
            const std::string contents = readBytes(file);
            complaint += contents == (isSaved ? whole : oldContents) ? "" : "file: " + contents;
            return complaint;
        });
        EXPECT_EQ(folder.entryCount(), 1U) << format.ending;
    }
}

}  // namespace
