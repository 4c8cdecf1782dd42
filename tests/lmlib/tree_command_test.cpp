#include "lmlib/tree_command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "lmlib/lm_lib_exception.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace {

using scripted_lmlib64::CommandEnd;
using scripted_lmlib64::CommandScript;
using scripted_lmlib64::setResult;
using Lines = std::vector<std::string>;

const std::string setCommandLine = "lmLibSetString /Execute/1/Command Measure";
const std::string typeLine = "lmLibGetType /Execute/1/Command";
const std::string waitLine = "lmLibWaitForType /Execute/1/Command 1 true";
const std::string symbolLine = "lmLibGetType /Execute/1/Result/ErrorSymbol";

void failMeasure() {
    scripted_lmlib64::setCommand("Measure", {CommandScript::failing("TooDark", "Too dark.")});
}

CommandScript ending(CommandEnd end) {
    CommandScript script;
    script.end = end;
    return script;
}

class TreeCommandTest : public testing::Test {
protected:
    void SetUp() override {
        scripted_lmlib64::reset();
        scripted_lmlib64::setNode("/Execute", "{}");
    }
};

TEST_F(TreeCommandTest, givesEachTemporaryCommandItsOwnSlot) {
    {
        const TreeCommand first("Measure");
        const TreeCommand second("Measure");
        EXPECT_EQ(first.slot().path(), "/Execute/1");
        EXPECT_EQ(second.slot().path(), "/Execute/2");
        EXPECT_EQ(first.parameters().path(), "/Execute/1/Parameters");
        EXPECT_EQ(first.result().path(), "/Execute/1/Result");
    }
    EXPECT_EQ(scripted_lmlib64::callLines(), (Lines{"lmLibMakeUniqueItem /Execute", "lmLibMakeUniqueItem /Execute",
                                                    "lmLibErase /Execute/2", "lmLibErase /Execute/1"}));
    EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}");
}

TEST_F(TreeCommandTest, leavesNamedSlotsInTheTree) {
    {
        const TreeCommand command("Measure", "mine");
        EXPECT_EQ(scripted_lmlib64::callLines(), Lines());
        command.execute(true);
    }
    EXPECT_TRUE(scripted_lmlib64::hasNode("/Execute/mine/Result"));
    const Lines lines = scripted_lmlib64::callLines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "lmLibErase /Execute/mine"), 0);
}

TEST_F(TreeCommandTest, throwsWhereNoSlotCanBeMade) {
    setResult("lmLibMakeUniqueItem", "/Execute", LmLibResultItemMaximumUniqueCountReached);
    try {
        const TreeCommand command("Measure");
        FAIL();
    } catch (const LmLibException &exception) {
        EXPECT_EQ(exception.itemPath, "/Execute");
        EXPECT_EQ(exception.errorCode, LmLibResultItemMaximumUniqueCountReached);
        EXPECT_EQ(exception.commandSlot, nullptr);
    }
}

// Scripts a command that fails, and makes every query for the type of this node return the code.
std::function<void()> failingWithType(const char *path, std::int32_t code) {
    return [=] {
        failMeasure();
        setResult("lmLibGetType", path, code);
    };
}

struct Execution {
    std::string name;
    std::function<void()> script;
    std::int32_t code;
    std::ptrdiff_t callCount;  // how many of the four calls of a whole execution are made
};

TEST_F(TreeCommandTest, endsAlikeWithAndWithoutThrowing) {
    const Lines whole = {setCommandLine, typeLine, waitLine, symbolLine};
    const std::vector<Execution> executions = {
        {"success", [] {}, 0, 4},
        {"success after a wait", [] { scripted_lmlib64::setCommand("Measure", {ending(CommandEnd::WhenWaitedFor)}); },
         0, 4},
        {"error symbol", failMeasure, LmLibResultExecutionFailed, 4},
        {"refused name", [] { setResult("lmLibSetString", "*", LmLibResultCommandRunning); }, LmLibResultCommandRunning,
         1},
        {"no command node", failingWithType("*/Command", LmLibResultItemInexistent), 0, 2},
        {"type 0", failingWithType("*/Command", LmLibResultOperationSucceeded), 0, 2},
        {"failing query", failingWithType("*/Command", LmLibResultNotConnected), LmLibResultNotConnected, 2},
        {"failing wait", [] { setResult("lmLibWaitForType", "*", LmLibResultOperationCanceled); },
         LmLibResultOperationCanceled, 3},
        {"slot gone while waiting", [] { setResult("lmLibWaitForType", "*", LmLibResultItemInexistent); },
         LmLibResultItemInexistent, 3},
        {"failing query of the error symbol", failingWithType("*/ErrorSymbol", LmLibResultNotConnected), 0, 4},
    };
    for (const Execution &row : executions) {
        SCOPED_TRACE(row.name);
        SetUp();
        row.script();
        const TreeCommand command("Measure");
        scripted_lmlib64::clearCalls();
        std::int32_t code = -1;
        command.execute(&code, "", true);
        EXPECT_EQ(code, row.code);
        EXPECT_EQ(scripted_lmlib64::callLines(), Lines(whole.begin(), whole.begin() + row.callCount));
        command.execute(nullptr, "", true);
        std::int32_t thrown = 0;
        try {
            command.execute(true);
        } catch (const LmLibException &exception) {
            thrown = exception.errorCode;
            EXPECT_EQ(exception.itemPath, "/Execute/1");
            EXPECT_NE(exception.commandSlot, nullptr);
        }
        EXPECT_EQ(thrown, row.code);
    }
}

TEST_F(TreeCommandTest, onlyStartsWhenNotWaiting) {
    const TreeCommand command("Measure");
    scripted_lmlib64::clearCalls();
    command.execute(false);
    std::int32_t code = -1;
    command.execute(&code, "Other", false);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(scripted_lmlib64::callLines(), (Lines{setCommandLine, "lmLibSetString /Execute/1/Command Other"}));
}

struct Question {
    std::string name;
    std::function<void()> script;
    bool answer;
    std::int32_t code;
    std::int32_t assertedCode;  // what assertSuccessful throws, 0 for nothing
    Lines calls;
};

// Queries a started command, and checks that assertSuccessful throws the right code in the same situation.
void ask(bool (TreeCommand::*question)(std::int32_t *) const, const Question &row) {
    SCOPED_TRACE(row.name);
    row.script();
    const TreeCommand command("Measure");
    command.execute(false);
    scripted_lmlib64::clearCalls();
    std::int32_t code = -1;
    EXPECT_EQ((command.*question)(&code), row.answer);
    EXPECT_EQ(code, row.code);
    EXPECT_EQ(scripted_lmlib64::callLines(), row.calls);
    std::int32_t asserted = 0;
    try {
        command.assertSuccessful();
    } catch (const LmLibException &exception) {
        asserted = exception.errorCode;
        EXPECT_NE(exception.commandSlot, nullptr);
    }
    EXPECT_EQ(asserted, row.assertedCode);
}

TEST_F(TreeCommandTest, tellsWhetherItHasFinished) {
    const auto typeGives = [](std::int32_t code) { return [=] { setResult("lmLibGetType", "*/Command", code); }; };
    const Lines twice = {typeLine, typeLine};
    const std::vector<Question> rows = {
        {"ended", [] {}, true, 0, 0, twice},
        {"running", [] { scripted_lmlib64::setCommand("Measure", {ending(CommandEnd::Never)}); }, false, 0,
         LmLibResultExecutionFailed, twice},
        {"absent", typeGives(LmLibResultItemInexistent), true, 0, 0, {typeLine}},
        {"type 0", typeGives(LmLibResultOperationSucceeded), true, 0, 0, {typeLine}},
        {"failing query",
         typeGives(LmLibResultNotConnected),
         true,
         LmLibResultNotConnected,
         LmLibResultNotConnected,
         {typeLine}},
        {"failing second query",
         [] {
             setResult("lmLibGetType", "*/Command", LmLibResultNotConnected, 2);
             setResult("lmLibGetType", "*/Command", LmLibResultNotConnected, 4);
         },
         false, LmLibResultNotConnected, LmLibResultNotConnected, twice},
    };
    for (const Question &row : rows) {
        SetUp();
        ask(&TreeCommand::finished, row);
    }
}

TEST_F(TreeCommandTest, tellsWhetherItWasSuccessful) {
    const auto typeGives = [](std::int32_t code) { return [=] { setResult("lmLibGetType", "*/ErrorSymbol", code); }; };
    const Lines once = {symbolLine};
    const std::vector<Question> rows = {
        {"no symbol", [] {}, true, 0, 0, once},
        {"symbol", failMeasure, false, 0, LmLibResultExecutionFailed, once},
        {"type 0", typeGives(LmLibResultOperationSucceeded), true, 0, 0, once},
        {"failing query", typeGives(LmLibResultNotConnected), true, LmLibResultNotConnected, LmLibResultNotConnected,
         once},
    };
    for (const Question &row : rows) {
        SetUp();
        ask(&TreeCommand::successful, row);
    }
}

}  // namespace
