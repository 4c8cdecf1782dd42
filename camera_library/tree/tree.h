// The library's tree: one document behind one lock, with protected nodes, waits and command slots. It runs no commands;
// it only records which slots have a running command.
//
// Every function may be called from any thread. If a function returns any code other than
// LmLibResultOperationSucceeded, or throws (only std::bad_alloc), the tree is unchanged. A node that a write replaces
// is freed after the lock is released. Errors are checked in this order: those of Path::parse, then
// LmLibResultItemProtected and LmLibResultCommandRunning, then those of node_access.h.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <limits>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "camera_library/tree/node.h"
#include "camera_library/tree/path.h"
#include "camera_library/tree/running_slots.h"

namespace lmlib64 {

// The run of a command, from the write that starts it until its result is stored.
struct Run {
    std::string slot;          // name below "Execute"
    std::uint64_t number = 0;  // different for every run
    std::string command;
    Node parameters;  // as they were when the run began
    // The node that becomes the slot's "Result". It is made in advance, so that storing it cannot fail.
    NodeObject::node_type result;
};

class Tree {
public:
    // Makes a tree whose node "Path" is the object `path`. The numbers of unique items go up to `greatestNumber`.
    explicit Tree(NodeObject path, std::uint64_t greatestNumber = std::numeric_limits<std::uint64_t>::max());

    // Calls the reader with the node, under the lock, and returns the reader's result. Returns an error if there is no
    // such node.
    template <typename Reader>
    LmLibResult read(std::string_view path, Reader reader) const {
        const std::lock_guard<std::mutex> lock(mutex);
        const Node *node = nullptr;
        const LmLibResult code = find(path, node);
        return code == LmLibResultOperationSucceeded ? reader(*node) : code;
    }

    // Puts the value at the path.
    LmLibResult write(std::string_view path, Node value);

    // Removes the node and everything below it.
    LmLibResult erase(std::string_view path);

    // Makes an empty object below the parent and sets `path` to the object's path. The object's name consists of the
    // base name, an underscore if the base name ends in a digit, and a number that no other unique item has. Returns
    // LmLibResultItemPathInvalid if the base name is not allowed in a path, and
    // LmLibResultItemMaximumUniqueCountReached if no number is left.
    LmLibResult makeUniqueItem(std::string_view parentPath, std::string_view baseName, std::string &path);

    // Does the work of lmLibWaitForType.
    LmLibResult waitForType(std::string_view path, LmLibType type, bool waitForChange);

    // Returns the number of threads that are waiting for a type.
    std::size_t waitCount() const;

    // Returns the name of the slot whose "Command" is at the path; empty for every other path.
    static std::string_view slotOfCommand(std::string_view path);

    // Writes the command's name to the "Command" of run.slot, removes the slot's "Result", and fills in the run's
    // number and parameters. Until finishRun is called, the slot refuses another "Command".
    LmLibResult beginRun(Run &run);

    // Stores the run's result in its slot and sets "Command" to null, in one step. Does nothing if the slot has been
    // erased or replaced since beginRun.
    void finishRun(Run &run) noexcept;

    // Ends every wait with LmLibResultOperationCanceled.
    void cancelWaits() noexcept;

    // Cancels the waits and resets the tree to its state after construction.
    void reset();

private:
    // A waiting thread; the object is on that thread's stack.
    struct Wait {
        Path path;
        LmLibType type;
        bool over = false;
        LmLibResult code = LmLibResultOperationSucceeded;
        std::condition_variable changed;
    };

    LmLibResult find(std::string_view path, const Node *&node) const;
    LmLibResult mayChange(const Path &path) const;
    void changed(const Path &path) noexcept;
    bool settle(Wait &wait) const;
    void wakeWaits() noexcept;
    void endWaits(LmLibResult code) noexcept;
    Node *findSlot(std::string_view slot);

    mutable std::mutex mutex;
    const NodeObject pathNode;
    const std::uint64_t greatestUniqueNumber;
    std::uint64_t uniqueNumber = 0;
    Node root;
    RunningSlots runningSlots;
    std::vector<Wait *> waits;
};

}  // namespace lmlib64
