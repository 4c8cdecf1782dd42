#include "camera_library/commands/command_executor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "camera_library/tree/json_text.h"

namespace {

using lmlib64::CommandExecutor;
using lmlib64::CommandFunction;
using lmlib64::Node;
using lmlib64::NodeObject;
using lmlib64::Tree;

// The command "Wait" of this test increments `begun`, and returns when `gateOpen` is true.
std::atomic<int> begun{0};
std::atomic<bool> gateOpen{false};
// The names given to the command "Echo". The text needs no lock: commands run one at a time, and a test reads the text
// only after its commands have ended.
std::string order;

Node echo(const Node &parameters) {
    order += std::get<std::string>(parameters.find("Name")->value);
    return NodeObject{{"Echo", parameters}};
}

Node waitForGate(const Node &parameters) {
    ++begun;
    while (!gateOpen) {
        std::this_thread::yield();
    }
    return NodeObject{{"Waited", parameters}};
}

Node throwFailure(const Node & /*parameters*/) {
    throw lmlib64::CommandFailure{"TooBig", "The size 300 is not from 2 to 200."};
}
Node throwException(const Node & /*parameters*/) {
    throw std::runtime_error("broken");
}
Node throwBadAlloc(const Node & /*parameters*/) {
    throw std::bad_alloc();
}
Node throwNumber(const Node & /*parameters*/) {
    throw 5;
}

CommandFunction find(std::string_view name) {
    static const std::vector<std::pair<std::string_view, CommandFunction>> commands{
        {"Echo", echo},          {"Wait", waitForGate},  {"Fail", throwFailure}, {"Throw", throwException},
        {"Full", throwBadAlloc}, {"Number", throwNumber}};
    for (const auto &[known, command] : commands) {
        if (known == name) {
            return command;
        }
    }
    return nullptr;
}

class Executor : public testing::Test {
public:
    Executor() {
        begun = 0;
        gateOpen = false;
        order.clear();
    }
    ~Executor() override { gateOpen = true; }

protected:
    // Starts the command that waits for the gate, and returns as soon as it runs.
    void startWaiting(const std::string &slot) {
        const int before = begun;
        ASSERT_EQ(executor.start(slot, "Wait"), LmLibResultOperationSucceeded);
        while (begun == before) {
            std::this_thread::yield();
        }
    }
    LmLibResult wait(const std::string &slot) {
        return tree.waitForType("/Execute/" + slot + "/Command", LmLibTypeNull, true);
    }
    // Returns the node as JSON. If it cannot be read, returns "code " and the result code; 3 means that it is absent.
    std::string json(const std::string &path) {
        std::string text;
        const LmLibResult code = tree.read(path, [&text](const Node &node) {
            lmlib64::appendJson(text, node, {});
            return LmLibResultOperationSucceeded;
        });
        return code == LmLibResultOperationSucceeded ? text : "code " + std::to_string(code);
    }

    Tree tree{{}};
    CommandExecutor executor{tree, find};
};

TEST_F(Executor, takesParametersAsTheyAreWhenCommandIsWritten) {
    startWaiting("gate");
    tree.write("/Execute/s/Parameters/Name", "before");
    executor.start("s", "Echo");
    tree.write("/Execute/s/Parameters/Name", "after");
    gateOpen = true;
    ASSERT_EQ(wait("s"), LmLibResultOperationSucceeded);
    EXPECT_EQ(json("/Execute/s/Result"), R"({"Echo":{"Name":"before"}})");
}

TEST_F(Executor, runsCommandsInTheOrderTheyWereStarted) {
    startWaiting("gate");
    for (const char *name : {"c", "a", "d", "b"}) {
        tree.write(std::string("/Execute/") + name + "/Parameters/Name", name);
        executor.start(name, "Echo");
    }
    gateOpen = true;
    EXPECT_EQ(wait("b"), LmLibResultOperationSucceeded);
    EXPECT_EQ(order, "cadb");
}

TEST_F(Executor, reportsEveryFailureTheSameWay) {
    const std::vector<std::tuple<const char *, const char *, const char *>> rows{
        {"Fail", "TooBig", "The size 300 is not from 2 to 200."},
        {"Throw", "InternalError", "The command \\\"Throw\\\" failed: broken."},
        {"Full", "OutOfMemory", "There is not enough memory to run the command \\\"Full\\\"."},
        {"Number", "InternalError", "The command \\\"Number\\\" failed for an unknown reason."},
        {"Nothing", "UnknownCommand", "There is no command \\\"Nothing\\\"."},
        {"", "UnknownCommand", "There is no command \\\"\\\"."},
    };
    for (const auto &[command, symbol, text] : rows) {
        ASSERT_EQ(executor.start("s", command), LmLibResultOperationSucceeded);
        ASSERT_EQ(wait("s"), LmLibResultOperationSucceeded);
        EXPECT_EQ(json("/Execute/s"), std::string(R"({"Command":null,"Result":{"ErrorSymbol":")") + symbol +
                                          R"(","ErrorText":")" + text + R"(","Execute":{"Command":")" + command +
                                          R"("}}})");
    }
}

TEST_F(Executor, guardsTheCommandOfARunningSlot) {
    tree.write("/Execute/s/Result/Old", 1);
    startWaiting("s");
    EXPECT_EQ(json("/Execute/s"), R"({"Command":"Wait"})");
    EXPECT_EQ(executor.start("s", "Echo"), LmLibResultCommandRunning);
    EXPECT_EQ(tree.write("/Execute/s/Command", Node()), LmLibResultCommandRunning);
    EXPECT_EQ(tree.write("/Execute/s/Command/x", Node()), LmLibResultCommandRunning);
    EXPECT_EQ(tree.erase("/Execute/s/Command"), LmLibResultCommandRunning);
    EXPECT_EQ(tree.write("/Execute/s/Result", 1), LmLibResultOperationSucceeded);
    EXPECT_EQ(tree.write("/Execute/t/Command", Node()), LmLibResultOperationSucceeded);
    EXPECT_EQ(json("/Execute/s"), R"({"Command":"Wait","Result":1})");
    gateOpen = true;
    ASSERT_EQ(wait("s"), LmLibResultOperationSucceeded);
    EXPECT_EQ(json("/Execute/s"), R"({"Command":null,"Result":{"Waited":null}})");
    EXPECT_EQ(tree.erase("/Execute/s/Command"), LmLibResultOperationSucceeded);
}

TEST_F(Executor, refusesASlotThatIsNoObject) {
    tree.write("/Execute/leaf", 1);
    EXPECT_EQ(executor.start("leaf", "Echo"), LmLibResultItemTypeNotCompatible);
    EXPECT_EQ(tree.write("/Execute/leaf", 2), LmLibResultOperationSucceeded);
    EXPECT_EQ(json("/Execute"), R"({"leaf":2})");
}

TEST_F(Executor, dropsTheResultIfTheSlotWasRemoved) {
    const std::vector<std::function<void()>> removals{
        [this] { tree.erase("/Execute/s"); },
        [this] { tree.write("/Execute/s", NodeObject()); },
        [this] { tree.erase("/Execute"); },
        [this] {
            tree.write("/Execute", NodeObject{{"s", NodeObject()}});
        },
    };
    for (const auto &remove : removals) {
        gateOpen = false;
        tree.write("/Execute", NodeObject());
        startWaiting("s");
        auto waiting = std::async(std::launch::async, [this] { return wait("s"); });
        while (tree.waitCount() == 0) {
            std::this_thread::yield();
        }
        remove();
        EXPECT_EQ(waiting.get(), LmLibResultItemInexistent);
        // A new slot gets the same name while the old command still runs.
        tree.write("/Execute/s/Parameters/Name", "new");
        EXPECT_EQ(executor.start("s", "Echo"), LmLibResultOperationSucceeded);
        EXPECT_EQ(json("/Execute/s/Command"), "\"Echo\"");
        EXPECT_EQ(json("/Execute/s/Result"), "code 3");
        gateOpen = true;
        EXPECT_EQ(wait("s"), LmLibResultOperationSucceeded);
        EXPECT_EQ(json("/Execute/s/Result"), R"({"Echo":{"Name":"new"}})");
    }
}

TEST_F(Executor, finalizesWithACommandRunningAndOthersQueued) {
    startWaiting("s");
    tree.write("/Execute/q/Parameters/Name", "queued");
    executor.start("q", "Echo");
    auto running = std::async(std::launch::async, [this] { return wait("s"); });
    auto queued = std::async(std::launch::async, [this] { return wait("q"); });
    while (tree.waitCount() < 2) {
        std::this_thread::yield();
    }
    auto finalizing = std::async(std::launch::async, [this] { executor.finalize(); });
    // The waits end although the command still runs. finalize() itself waits for the command.
    EXPECT_EQ(running.get(), LmLibResultOperationCanceled);
    EXPECT_EQ(queued.get(), LmLibResultOperationCanceled);
    EXPECT_EQ(finalizing.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    gateOpen = true;
    finalizing.get();
    EXPECT_EQ(json(""), R"({"Path":{}})");
    EXPECT_EQ(order, "");

    executor.finalize();
    tree.write("/Execute/s/Parameters/Name", "again");
    executor.start("s", "Echo");
    EXPECT_EQ(wait("s"), LmLibResultOperationSucceeded);
    EXPECT_EQ(order, "again");
}

}  // namespace
