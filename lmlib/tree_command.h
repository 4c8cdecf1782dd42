// One command of the camera library and its slot in the tree:
//
//   /Execute/<slot>/Command      the name; writing it starts the command, and it turns to null at the end
//   /Execute/<slot>/Parameters   written before the start
//   /Execute/<slot>/Result       written by the library; has an "ErrorSymbol" if and only if the command failed
//
// The caller knows what the parameters and results mean. Waiting for a command blocks the calling thread without a time
// limit. A command may be executed again.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "lmlib/tree_item.h"

class TemporarySlot;

class TreeCommand {
public:
    // With a nodeName, the slot is the child of /Execute with that name and stays in the tree. Without one, a new slot
    // is made and is erased when this command and every exception thrown for it are gone; if it cannot be made, an
    // LmLibException with the path /Execute is thrown.
    explicit TreeCommand(std::string name, const std::string &nodeName = "");

    // The slot and its children "Parameters" and "Result". No library call.
    const TreeItem &slot() const { return slotItem; }
    TreeItem parameters() const;
    TreeItem result() const;

    // Starts the command (or the one named by the override, if that is not empty) and, if asked to, waits until it has
    // ended. Does not throw: the result code goes to resultOut, which may be null. It is 17 (ExecutionFailed) if the
    // command ended with an error.
    void execute(std::int32_t *resultOut, const std::string &commandNameOverride, bool wait) const;
    // The same with the command's own name, followed by checkResult.
    void execute(bool wait) const;
    // Unless the code is 0, throws LmLibException with the slot's path and shared ownership of the temporary slot.
    void checkResult(std::int32_t code) const;

    // True if the command has ended or was never started. The result code of the query goes to resultOut, which may be
    // null; an absent node is not a failure.
    bool finished(std::int32_t *resultOut = nullptr) const;
    // True if the result has no error symbol, or if the query fails; resultOut as above.
    bool successful(std::int32_t *resultOut = nullptr) const;
    // Throws LmLibException: with code 17 unless the command is finished and successful, or with the code of a query
    // that fails.
    void assertSuccessful() const;

private:
    TreeItem commandNode() const;
    std::int32_t waitForCompletion() const;

    std::string commandName;
    TreeItem slotItem;
    std::shared_ptr<TemporarySlot> temporarySlot;
};
