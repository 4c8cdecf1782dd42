#include "lmlib/tree_command.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "lmlib/lm_lib_exception.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace {

using scripted_lmlib64::setResult;
using Lines = std::vector<std::string>;

static_assert(!std::is_polymorphic_v<LmLibException>);

const std::string setCommandLine = "lmLibSetString /Execute/1/Command Measure";
const std::string typeLine = "lmLibGetType /Execute/1/Command";
const std::string waitLine = "lmLibWaitForType /Execute/1/Command 1 true";
const std::string symbolLine = "lmLibGetType /Execute/1/Result/ErrorSymbol";

// Returns a function that scripts the library: once the function has been called, queries of the node's type return
// this code. If `occurrence` is n, only the n-th of these queries returns the code. If `occurrence` is 0, all do.
std::function<void()> typeGives(const char *path, std::int32_t code, int occurrence = 0) {
    return [=] { setResult("lmLibGetType", path, code, occurrence); };
}

void failMeasure() {
    scripted_lmlib64::failCommand("Measure", "TooDark", "Too dark.");
}

// Returns the code of the exception that the action throws; 0 if the action throws nothing. Checks that the exception
// names the command's slot.
std::int32_t thrownBy(const std::function<void()> &action) {
    try {
        action();
        return 0;
    } catch (const LmLibException &exception) {
        EXPECT_EQ(exception.itemPath, "/Execute/1");
        EXPECT_NE(exception.commandSlot, nullptr);
        return exception.errorCode;
    }
}

class TreeCommandTest : public testing::Test {
protected:
    void SetUp() override { scripted_lmlib64::reset(); }
};

TEST_F(TreeCommandTest, erasesTheSlotThatItMadeButNotANamedSlot) {
    {
        const TreeCommand named("Measure", "mine");
        const TreeCommand first("Measure");
        const TreeCommand second("Measure");
        EXPECT_EQ(named.slot().path(), "/Execute/mine");
        EXPECT_EQ(second.slot().path(), "/Execute/2");
        EXPECT_EQ(first.parameters().path(), "/Execute/1/Parameters");
        EXPECT_EQ(first.result().path(), "/Execute/1/Result");
    }
    EXPECT_EQ(scripted_lmlib64::callLines(), (Lines{"lmLibMakeUniqueItem /Execute", "lmLibMakeUniqueItem /Execute",
                                                    "lmLibErase /Execute/2", "lmLibErase /Execute/1"}));
}

TEST_F(TreeCommandTest, keepsItsSlotWhileAnyCopyOfItsExceptionLives) {
    failMeasure();
    std::optional<TreeCommand> command(std::in_place, "Measure");
    std::optional<LmLibException> first;
    try {
        command->execute(true);
    } catch (const LmLibException &exception) {
        first = exception;
    }
    std::optional<LmLibException> second = first;
    command.reset();
    first.reset();
    EXPECT_EQ(second->errorSymbol(), "TooDark");
    EXPECT_EQ(second->errorText(), "Too dark.");
    scripted_lmlib64::clearCalls();
    second.reset();
    EXPECT_EQ(scripted_lmlib64::callLines(), Lines{"lmLibErase /Execute/1"});
}

TEST_F(TreeCommandTest, logsAFailureToEraseASlotUnlessItIsGone) {
    for (const std::int32_t code : {LmLibResultItemInexistent, LmLibResultItemProtected}) {
        SetUp();
        scripted_lmlib64::setResult("lmLibErase", "*", code);
        { const TreeCommand command("Measure"); }
        Lines calls{"lmLibMakeUniqueItem /Execute", "lmLibErase /Execute/1"};
        if (code == LmLibResultItemProtected) {
            calls.emplace_back("lmLibWriteDebugMessage LmLibException ItemProtected at /Execute/1 [no result]");
        }
        EXPECT_EQ(scripted_lmlib64::callLines(), calls);
    }
}

TEST_F(TreeCommandTest, reportsTheSameCodeByExceptionAndByResult) {
    const Lines whole = {setCommandLine, typeLine, waitLine, symbolLine};
    const struct {
        const char *name;
        std::function<void()> script;
        std::int32_t code;
        std::ptrdiff_t callCount;  // how many of the four calls of a complete execution are made
    } rows[] = {
        {"success", [] {}, 0, 4},
        {"error symbol", failMeasure, LmLibResultExecutionFailed, 4},
        {"refused name", [] { setResult("lmLibSetString", "*", LmLibResultCommandRunning); }, LmLibResultCommandRunning,
         1},
        {"no command node", typeGives("*/Command", LmLibResultItemInexistent), 0, 2},
        {"type 0", typeGives("*/Command", LmLibResultOperationSucceeded), 0, 2},
        {"failing query", typeGives("*/Command", LmLibResultNotConnected), LmLibResultNotConnected, 2},
        {"slot gone while waiting", [] { setResult("lmLibWaitForType", "*", LmLibResultItemInexistent); },
         LmLibResultItemInexistent, 3},
        {"failing query of the error symbol", typeGives("*/ErrorSymbol", LmLibResultNotConnected), 0, 4},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        SetUp();
        row.script();
        const TreeCommand command("Measure");
        scripted_lmlib64::clearCalls();
        std::int32_t code = -1;
        command.execute(&code, "", true);
        EXPECT_EQ(code, row.code);
        EXPECT_EQ(scripted_lmlib64::callLines(), Lines(whole.begin(), whole.begin() + row.callCount));
        EXPECT_EQ(thrownBy([&] { command.execute(true); }), row.code);
    }
}

TEST_F(TreeCommandTest, startsUnderAnotherNameAndDoesNotWaitUnlessAsked) {
    const TreeCommand command("Measure");
    scripted_lmlib64::clearCalls();
    command.execute(nullptr, "Other", false);
    EXPECT_EQ(scripted_lmlib64::callLines(), Lines{"lmLibSetString /Execute/1/Command Other"});
}

TEST_F(TreeCommandTest, tellsWhetherItHasFinishedAndSucceeded) {
    const struct {
        const char *name;
        std::function<void()> script;
        bool finished, successful;
        std::int32_t code;          // reported by finished or by successful; 0 if both report 0
        std::int32_t assertedCode;  // thrown by assertSuccessful; 0 if it throws nothing
    } rows[] = {
        {"ended", [] {}, true, true, 0, 0},
        {"running", [] { scripted_lmlib64::setNode("/Execute/1/Command", "\"Measure\""); }, false, true, 0,
         LmLibResultExecutionFailed},
        {"absent", typeGives("*/Command", LmLibResultItemInexistent), true, true, 0, 0},
        {"type 0", typeGives("*/Command", LmLibResultOperationSucceeded), true, true, 0, 0},
        {"failing query", typeGives("*/Command", LmLibResultNotConnected), true, true, LmLibResultNotConnected,
         LmLibResultNotConnected},
        {"failing second query", typeGives("*/Command", LmLibResultNotConnected, 2), false, true,
         LmLibResultNotConnected, 0},
        {"error symbol", [] { scripted_lmlib64::setNode("/Execute/1/Result/ErrorSymbol", "\"TooDark\""); }, true, false,
         0, LmLibResultExecutionFailed},
        {"failing query of the error symbol", typeGives("*/ErrorSymbol", LmLibResultNotConnected), true, true,
         LmLibResultNotConnected, LmLibResultNotConnected},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        SetUp();
        const TreeCommand command("Measure");
        command.execute(false);
        row.script();
        std::int32_t finishedCode = -1;
        EXPECT_EQ(command.finished(&finishedCode), row.finished);
        std::int32_t successCode = -1;
        EXPECT_EQ(command.successful(&successCode), row.successful);
        EXPECT_EQ(finishedCode + successCode, row.code)
            << "the sum of the codes that finished and successful report; at most one of them is not 0";
        EXPECT_EQ(thrownBy([&] { command.assertSuccessful(); }), row.assertedCode);
    }
}

}  // namespace
