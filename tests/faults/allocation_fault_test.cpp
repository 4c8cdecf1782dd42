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
#include <string_view>

#include "camera_library/lmlib64.h"
#include "tests/camera_library/temporary_folder.h"
#include "tests/faults/failing_allocation.h"

namespace {

using failing_allocation::Failing;
using failing_allocation::Pause;

const char *const longText = "a text that is too long to be kept within a string object itself";
const char *const oldContents = "the file of an earlier save";

std::string jsonOf(const char *path) {
    std::int32_t result = 0;
    const char *json = lmLibGetJson(&result, path, 0, 0, 1);
    return json == nullptr ? "code " + std::to_string(result) : json;
}

// The library's calls, with what must hold when one of them fails. The steps allocate nothing themselves.
class Session {
public:
    virtual ~Session() = default;

    // Plays all steps, also after some have failed.
    virtual void play() = 0;

    // With every allocation possible again: makes sure that nothing runs any more, and adds to the complaints
    // about what the session has left.
    virtual void check() {}

    std::string complaint;

protected:
    // A step that changes the tree or only reads it. Where it fails, the tree is as it was.
    template <typename Call>
    void step(const char *name, Call call) {
        std::string before;
        {
            const Pause pause;
            before = jsonOf("");
        }
        std::int32_t result = -1;
        call(&result);
        const Pause pause;
        if (result != LmLibResultOperationSucceeded && result != LmLibResultInternalError && !hasFailed) {
            complain(name, "code " + std::to_string(result));
        }
        // What follows a failed step may miss what that was to write.
        hasFailed = hasFailed || result != LmLibResultOperationSucceeded;
        if (result != LmLibResultOperationSucceeded && jsonOf("") != before) {
            complain(name, "changed the tree from " + before + " to " + jsonOf(""));
        }
    }

    bool hasFailed = false;

    void complain(const std::string &where, const std::string &what) { complaint += where + ": " + what + "\n"; }
};

class TreeSession : public Session {
public:
    void play() override {
        step("string", [](std::int32_t *result) { lmLibSetString(result, "/A/Some/Texts", longText); });
        step("int", [](std::int32_t *result) { lmLibSetInt(result, "/A/Array/\\0/Number", 1); });
        step("double", [](std::int32_t *result) { lmLibSetDouble(result, "/A/Array/\\1", 0.1); });
        step("bool", [](std::int32_t *result) { lmLibSetBool(result, "/A/Array/\\2/Flag", 1); });
        step("null", [](std::int32_t *result) { lmLibSetNull(result, "/A/An object with a long name/Null"); });
        step("JSON", [](std::int32_t *result) {
            lmLibSetJson(result, "/B", R"({"A name that is not short":[1,2.5,"a text that is not short",{"C":null}]})");
        });
        step("no JSON", [](std::int32_t *result) {
            lmLibSetJson(result, "/C", R"({"A name that is not short":["a text that is not short",)");
            // That it is none is what the library is to say of it.
            *result = *result == LmLibResultCouldNotInterpretJsonText ? 0 : *result;
        });
        step("replace", [](std::int32_t *result) { lmLibSetString(result, "/A/Array", longText); });
        step("unique item",
             [](std::int32_t *result) { lmLibMakeUniqueItem(result, "/Execute", "a longer base name"); });
        step("get string", [](std::int32_t *result) { lmLibGetString(result, "/A/Some/Texts"); });
        step("get name", [](std::int32_t *result) { lmLibGetName(result, "/A/An object with a long name"); });
        step("get JSON", [](std::int32_t *result) { lmLibGetJson(result, "", 1, 18, 0); });
        step("type", [](std::int32_t *result) { lmLibGetType(result, "/A"); });
        step("count", [](std::int32_t *result) { lmLibGetCount(result, "/A"); });
        step("wait", [](std::int32_t *result) { lmLibWaitForType(result, "/A", LmLibTypeObject, 1); });
        step("debug message", [](std::int32_t *result) { lmLibWriteDebugMessage(result, longText); });
        step("debug buffer", [](std::int32_t *result) { lmLibGetDebugBuffer(result); });
        step("erase", [](std::int32_t *result) { lmLibErase(result, "/A/Some"); });
        step("finalize", [](std::int32_t *result) { lmLibFinalize(result); });
    }
};

// One command in a slot of its own.
class CommandSession : public Session {
public:
    CommandSession(std::string commandName, std::string parametersJson)
        : command(std::move(commandName)), parameters(std::move(parametersJson)) {}

    void play() override {
        step("parameters",
             [this](std::int32_t *result) { lmLibSetJson(result, "/Execute/Slot/Parameters", parameters.c_str()); });
        lmLibSetString(&started, "/Execute/Slot/Command", command.c_str());
        lmLibWaitForType(&waited, "/Execute/Slot/Command", LmLibTypeNull, 1);
    }

    void check() override {
        if (started == LmLibResultOperationSucceeded) {
            lmLibWaitForType(nullptr, "/Execute/Slot/Command", LmLibTypeNull, 1);
            checkResult();
        } else if (started != LmLibResultInternalError) {
            complain("start", "code " + std::to_string(started));
        } else if (lmLibGetType(nullptr, "/Execute/Slot/Command") != LmLibTypeAbsent) {
            complain("start", "the slot has a command that was not started");
        }
        if (waited != LmLibResultOperationSucceeded && waited != LmLibResultInternalError &&
            started == LmLibResultOperationSucceeded) {
            complain("wait", "code " + std::to_string(waited));
        }
    }

    bool hasSucceeded() const {
        return started == LmLibResultOperationSucceeded &&
               lmLibGetType(nullptr, "/Execute/Slot/Result/ErrorSymbol") == LmLibTypeAbsent;
    }

private:
    void checkResult() {
        if (hasSucceeded()) {
            return;
        }
        const std::string result = jsonOf("/Execute/Slot/Result");
        // Without its parameters a command fails for want of them.
        const bool hasParameters = lmLibGetType(nullptr, "/Execute/Slot/Parameters") != LmLibTypeAbsent;
        const bool saysWhy = result.find("\"ErrorSymbol\":\"OutOfMemory\"") != std::string::npos &&
                             result.find("There is not enough memory") != std::string::npos &&
                             result.find("\"Command\":\"" + command + "\"") != std::string::npos;
        if (hasParameters && !saysWhy) {
            complain("result", result);
        }
    }

    std::string command;
    std::string parameters;
    std::int32_t started = -1;
    std::int32_t waited = -1;
};

// A command that writes a file over an older one.
class SaveSession : public CommandSession {
public:
    explicit SaveSession(const std::string &fileName)
        : CommandSession("GenerateCalibrationPattern",
                         R"({"Filename":")" + fileName +
                             R"(","Patterns":[{"Type":"Flexible","GridSize":[5,4],"GridSpacing":10.0}]})"),
          file(fileName) {
        writeBytes(file, oldContents);
    }

    void check() override {
        CommandSession::check();
        const std::string contents = readBytes(file);
        const bool isPdf = file.back() == 'f';
        const bool isWhole =
            isPdf ? contents.rfind("%PDF-", 0) == 0 && contents.find("%%EOF", contents.size() - 8) != std::string::npos
                  : contents.rfind('{', 0) == 0 && contents.find("}\n", contents.size() - 2) != std::string::npos;
        if (hasSucceeded() ? !isWhole : contents != oldContents) {
            complain("file", (hasSucceeded() ? "not written whole: " : "changed by a failed save: ") + contents);
        }
    }

private:
    std::string file;
};

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
