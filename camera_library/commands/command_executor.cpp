#include "camera_library/commands/command_executor.h"

#include <exception>
#include <new>
#include <string>
#include <utility>

namespace lmlib64 {

namespace {

NodeObject failureResult(const std::string &command, std::string symbol, std::string text) {
    return {{"ErrorSymbol", std::move(symbol)},
            {"ErrorText", std::move(text)},
            {"Execute", NodeObject{{"Command", command}}}};
}

// Returns the node "Result" that a slot gets if its command runs out of memory. The node is made before the command
// runs, because afterwards there may be no memory left for it.
NodeObject::node_type readyResult(const std::string &command) {
    NodeObject slot;
    slot.emplace("Result", failureResult(command, "OutOfMemory",
                                         "There is not enough memory to run the command \"" + command + "\"."));
    return slot.extract(slot.begin());
}

}  // namespace

LmLibResult CommandExecutor::start(std::string_view slot, std::string_view command) {
    std::list<Run> runs(1);
    Run &run = runs.front();
    run.slot = slot;
    run.command = command;
    run.result = readyResult(run.command);
    const std::lock_guard<std::mutex> lock(mutex);
    if (!stopping && !worker.joinable()) {
        worker = std::thread([this] { work(); });
    }
    const LmLibResult code = tree.beginRun(run);
    if (code == LmLibResultOperationSucceeded) {
        queue.splice(queue.end(), runs);
        changed.notify_all();
    }
    return code;
}

void CommandExecutor::work() {
    std::unique_lock<std::mutex> lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return stopping || !queue.empty(); });
        if (stopping) {
            return;
        }
        std::list<Run> runs;
        runs.splice(runs.end(), queue, queue.begin());
        lock.unlock();
        execute(runs.front());
        tree.finishRun(runs.front());
        runs.clear();
        lock.lock();
    }
}

// Sets the run's result to the command's result, or to a description of the command's failure.
void CommandExecutor::execute(Run &run) const {
    const auto fail = [&run](std::string symbol, std::string text) {
        run.result.mapped() = failureResult(run.command, std::move(symbol), std::move(text));
    };
    try {
        try {
            const CommandFunction command = lookup(run.command);
            if (command == nullptr) {
                fail("UnknownCommand", "There is no command \"" + run.command + "\".");
                return;
            }
            run.result.mapped() = command(run.parameters);
        } catch (const CommandFailure &failure) {
            fail(failure.symbol, failure.text);
        } catch (const std::bad_alloc &) {
            // The result that was made in advance reports that memory ran out.
        } catch (const std::exception &error) {
            fail("InternalError", "The command \"" + run.command + "\" failed: " + error.what() + ".");
        } catch (...) {
            fail("InternalError", "The command \"" + run.command + "\" failed for an unknown reason.");
        }
    } catch (const std::exception &) {
        // There is not enough memory to describe the failure, so the result that was made in advance stays.
    }
}

// Ends the thread after its current run, and drops all queued runs. No new thread starts until `stopping` is false
// again.
void CommandExecutor::stopThread(std::unique_lock<std::mutex> &lock) {
    stopping = true;
    changed.notify_all();
    std::thread ending = std::move(worker);
    lock.unlock();
    if (ending.joinable()) {
        ending.join();
    }
    lock.lock();
    queue.clear();
}

void CommandExecutor::stop() {
    const std::lock_guard<std::mutex> stopLock(stopMutex);
    std::unique_lock<std::mutex> lock(mutex);
    stopThread(lock);
    stopping = false;
}

void CommandExecutor::finalize() {
    tree.cancelWaits();
    const std::lock_guard<std::mutex> stopLock(stopMutex);
    std::unique_lock<std::mutex> lock(mutex);
    stopThread(lock);
    stopping = false;
    tree.reset();
}

}  // namespace lmlib64
