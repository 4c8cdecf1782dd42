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

struct Row {
    std::string name;
    std::function<void()> script;
    std::int32_t code;
    Lines calls;
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

// How both forms of execute end, with waiting.
std::vector<Row> executions() {
    const Lines withWait = {setCommandLine, typeLine, waitLine};
    const Lines whole = {setCommandLine, typeLine, waitLine, symbolLine};
    return {
        {"success", [] {}, 0, whole},
        {"success after a wait", [] { scripted_lmlib64::setCommand("Measure", {ending(CommandEnd::WhenWaitedFor)}); },
         0, whole},
        {"error symbol", failMeasure, LmLibResultExecutionFailed, whole},
        {"refused name",
         [] { setResult("lmLibSetString", "*", LmLibResultCommandRunning); },
         LmLibResultCommandRunning,
         {setCommandLine}},
        {"no command node",
         [] {
             failMeasure();
             setResult("lmLibGetType", "*/Command", LmLibResultItemInexistent);
         },
         0,
         {setCommandLine, typeLine}},
        {"type 0",
         [] {
             failMeasure();
             setResult("lmLibGetType", "*/Command", LmLibResultOperationSucceeded);
         },
         0,
         {setCommandLine, typeLine}},
        {"failing query",
         [] { setResult("lmLibGetType", "*/Command", LmLibResultNotConnected); },
         LmLibResultNotConnected,
         {setCommandLine, typeLine}},
        {"failing wait", [] { setResult("lmLibWaitForType", "*", LmLibResultOperationCanceled); },
         LmLibResultOperationCanceled, withWait},
        {"slot gone while waiting", [] { setResult("lmLibWaitForType", "*", LmLibResultItemInexistent); },
         LmLibResultItemInexistent, withWait},
        {"failing query of the error symbol",
         [] {
             failMeasure();
             setResult("lmLibGetType", "*/ErrorSymbol", LmLibResultNotConnected);
         },
         0, whole},
    };
}

TEST_F(TreeCommandTest, executesWithoutThrowing) {
    for (const Row &row : executions()) {
        SetUp();
        row.script();
        const TreeCommand command("Measure");
        scripted_lmlib64::clearCalls();
        std::int32_t code = -1;
        command.execute(&code, "", true);
        EXPECT_EQ(code, row.code) << row.name;
        EXPECT_EQ(scripted_lmlib64::callLines(), row.calls) << row.name;
        command.execute(nullptr, "", true);
    }
}

TEST_F(TreeCommandTest, throwsTheSameCodesWithItsSlot) {
    for (const Row &row : executions()) {
        SetUp();
        row.script();
        const TreeCommand command("Measure");
        std::int32_t code = 0;
        try {
            command.execute(true);
        } catch (const LmLibException &exception) {
            code = exception.errorCode;
            EXPECT_EQ(exception.itemPath, "/Execute/1") << row.name;
            EXPECT_NE(exception.commandSlot, nullptr) << row.name;
        }
        EXPECT_EQ(code, row.code) << row.name;
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

struct TestRow {
    std::string name;
    std::function<void()> script;
    bool answer;
    std::int32_t code;
    std::int32_t assertedCode;  // what assertSuccessful throws, 0 for nothing
    std::size_t queryCount;
};

TEST_F(TreeCommandTest, tellsWhetherItHasFinished) {
    const std::vector<TestRow> rows = {
        {"ended", [] {}, true, 0, 0, 2},
        {"running", [] { scripted_lmlib64::setCommand("Measure", {ending(CommandEnd::Never)}); }, false, 0,
         LmLibResultExecutionFailed, 2},
        {"absent", [] { setResult("lmLibGetType", "*/Command", LmLibResultItemInexistent); }, true, 0, 0, 1},
        {"type 0", [] { setResult("lmLibGetType", "*/Command", LmLibResultOperationSucceeded); }, true, 0, 0, 1},
        {"failing query", [] { setResult("lmLibGetType", "*/Command", LmLibResultNotConnected); }, true,
         LmLibResultNotConnected, LmLibResultNotConnected, 1},
        {"failing second query",
         [] {
             setResult("lmLibGetType", "*/Command", LmLibResultNotConnected, 2);
             setResult("lmLibGetType", "*/Command", LmLibResultNotConnected, 4);
         },
         false, LmLibResultNotConnected, LmLibResultNotConnected, 2},
    };
    for (const TestRow &row : rows) {
        SetUp();
        row.script();
        const TreeCommand command("Measure");
        command.execute(false);
        scripted_lmlib64::clearCalls();
        std::int32_t code = -1;
        EXPECT_EQ(command.finished(&code), row.answer) << row.name;
        EXPECT_EQ(code, row.code) << row.name;
        EXPECT_EQ(scripted_lmlib64::callLines(), Lines(row.queryCount, typeLine)) << row.name;
        std::int32_t asserted = 0;
        try {
            command.assertSuccessful();
        } catch (const LmLibException &exception) {
            asserted = exception.errorCode;
        }
        EXPECT_EQ(asserted, row.assertedCode) << row.name;
    }
}

TEST_F(TreeCommandTest, tellsWhetherItWasSuccessful) {
    const std::vector<TestRow> rows = {
        {"no symbol", [] {}, true, 0, 0, 1},
        {"symbol", failMeasure, false, 0, LmLibResultExecutionFailed, 1},
        {"type 0", [] { setResult("lmLibGetType", symbolLine.substr(13), LmLibResultOperationSucceeded); }, true, 0, 0,
         1},
        {"failing query", [] { setResult("lmLibGetType", symbolLine.substr(13), LmLibResultNotConnected); }, true,
         LmLibResultNotConnected, LmLibResultNotConnected, 1},
    };
    for (const TestRow &row : rows) {
        SetUp();
        row.script();
        const TreeCommand command("Measure");
        command.execute(false);
        scripted_lmlib64::clearCalls();
        std::int32_t code = -1;
        EXPECT_EQ(command.successful(&code), row.answer) << row.name;
        EXPECT_EQ(code, row.code) << row.name;
        EXPECT_EQ(scripted_lmlib64::callLines(), Lines{symbolLine}) << row.name;
        std::int32_t asserted = 0;
        try {
            command.assertSuccessful();
        } catch (const LmLibException &exception) {
            asserted = exception.errorCode;
            EXPECT_NE(exception.commandSlot, nullptr);
        }
        EXPECT_EQ(asserted, row.assertedCode) << row.name;
    }
}

}  // namespace
