#include "lmlib/lm_lib_exception.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "lmlib/error_codes.h"
#include "lmlib/temporary_slot.h"
#include "lmlib/tree_command.h"
#include "lmlib/tree_item.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace {

using Lines = std::vector<std::string>;

static_assert(!std::is_polymorphic_v<LmLibException>);

class LmLibExceptionTest : public testing::Test {
protected:
    void SetUp() override {
        scripted_lmlib64::reset();
        scripted_lmlib64::setCommand("Measure",
                                     {scripted_lmlib64::CommandScript::failing("TooDark", "It is too dark.")});
    }
};

// The exception of a failed command. The command object no longer exists.
LmLibException failedMeasurement() {
    try {
        TreeCommand("Measure").execute(true);
    } catch (const LmLibException &exception) {
        return exception;
    }
    throw std::logic_error("the command did not fail");
}

std::size_t eraseCount() {
    std::size_t count = 0;
    for (const scripted_lmlib64::Call &call : scripted_lmlib64::calls()) {
        count += call.function == "lmLibErase" ? 1U : 0U;
    }
    return count;
}

// The interface's constants are named after their codes.
TEST(ErrorCodes, haveTheNamesOfTheInterface) {
    std::ifstream header(INTERFACE_HEADER);
    const std::string prefix = "LmLibResult";
    std::int32_t count = 0;
    std::string constant;
    std::string equals;
    std::int32_t code = 0;
    for (std::string line; std::getline(header, line);) {
        std::istringstream words(line);
        if (words >> constant >> equals >> code && equals == "=" && constant.compare(0, prefix.size(), prefix) == 0) {
            EXPECT_EQ(errorName(code), constant.substr(prefix.size()));
            ++count;
        }
    }
    EXPECT_EQ(count, 29);
}

TEST(ErrorCodes, haveNoNamesBeyondTheLastOne) {
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t code : {29, -1, Limits::min(), Limits::max()}) {
        EXPECT_STREQ(errorName(code), "") << code;
    }
}

TEST_F(LmLibExceptionTest, writesOneDebugLine) {
    const LmLibException exception("/A", LmLibResultItemInexistent, nullptr);
    const LmLibException copy = exception;
    EXPECT_EQ(copy.itemPath, "/A");
    EXPECT_EQ(copy.errorCode, 3);
    EXPECT_EQ(copy.errorName, "ItemInexistent");
    EXPECT_EQ(LmLibException("", -5, nullptr).errorName, "");
    EXPECT_EQ(scripted_lmlib64::callLines(),
              (Lines{"lmLibWriteDebugMessage LmLibException ItemInexistent at /A [no result]",
                     "lmLibWriteDebugMessage LmLibException  at  [no result]"}));
}

TEST_F(LmLibExceptionTest, readsWhatTheFailedCommandLeft) {
    const LmLibException exception = failedMeasurement();
    EXPECT_EQ(exception.errorSymbol(), "TooDark");
    EXPECT_EQ(exception.errorText(), "It is too dark.");
    EXPECT_THROW(static_cast<void>(LmLibException("/A", 17, nullptr).errorSymbol()), LmLibException);
}

TEST_F(LmLibExceptionTest, keepsTheSlotWhileAnyCopyLives) {
    std::optional<LmLibException> first = failedMeasurement();
    std::optional<LmLibException> second = first;
    EXPECT_EQ(second->errorSymbol(), "TooDark");
    first.reset();
    EXPECT_EQ(second->errorSymbol(), "TooDark");
    EXPECT_EQ(eraseCount(), 0U);
    second.reset();
    EXPECT_EQ(eraseCount(), 1U);
    EXPECT_FALSE(scripted_lmlib64::hasNode("/Execute/1"));
}

TEST_F(LmLibExceptionTest, keepsTheSlotWhileTheCommandLives) {
    std::optional<TreeCommand> command(std::in_place, "Measure");
    EXPECT_THROW(command->execute(true), LmLibException);
    EXPECT_TRUE(scripted_lmlib64::hasNode("/Execute/1/Result/ErrorSymbol"));
    EXPECT_EQ(eraseCount(), 0U);
    command.reset();
    EXPECT_FALSE(scripted_lmlib64::hasNode("/Execute/1"));
}

TEST_F(LmLibExceptionTest, erasesTheSlotOnceWhateverThreadLetsGoLast) {
    std::vector<LmLibException> copies(16, failedMeasurement());
    std::vector<std::thread> threads;
    while (!copies.empty()) {
        threads.emplace_back([copy = copies.back()] { EXPECT_EQ(copy.errorCode, 17); });
        copies.pop_back();
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    threads.clear();
    EXPECT_EQ(eraseCount(), 1U);
}

TEST_F(LmLibExceptionTest, releasesASlotThatIsGoneInSilence) {
    scripted_lmlib64::setNode("/Execute", "{}");
    { const TemporarySlot slot("/Execute/9"); }
    { const TemporarySlot slot(""); }
    EXPECT_EQ(scripted_lmlib64::callLines(), Lines{"lmLibErase /Execute/9"});
}

TEST_F(LmLibExceptionTest, logsAnyOtherFailureToEraseASlot) {
    scripted_lmlib64::setResult("lmLibErase", "*", LmLibResultItemProtected);
    { const TreeCommand command("Measure"); }
    EXPECT_EQ(scripted_lmlib64::callLines(),
              (Lines{"lmLibMakeUniqueItem /Execute", "lmLibErase /Execute/1",
                     "lmLibWriteDebugMessage LmLibException ItemProtected at /Execute/1 [no result]"}));
}

}  // namespace
