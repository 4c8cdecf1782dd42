// One command of the camera library and its slot in the tree:
//
//   /Execute/<slot>/Command      the command's name; writing it starts the command; null when the command has ended
//   /Execute/<slot>/Parameters   written before the start
//   /Execute/<slot>/Result       written by the library; has an "ErrorSymbol" if and only if the command failed
//
// The meaning of the parameters and results is the caller's concern. Waiting for a command blocks the calling thread
// without a time limit. A command may be executed again.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "lmlib/tree_item.h"

class TemporarySlot;

class TreeCommand {
public:
    // If `nodeName` is not empty, the slot is the child of /Execute with that name and stays in the tree. Otherwise a
    // new slot is made. The new slot is erased when this command and every exception thrown for it have been destroyed.
    // If the slot cannot be made, an LmLibException with the path /Execute is thrown.
    explicit TreeCommand(std::string name, const std::string &nodeName = "");

    // Return the slot and its children "Parameters" and "Result". These functions do not call the library.
    const TreeItem &slot() const { return slotItem; }
    TreeItem parameters() const;
    TreeItem result() const;

    // Starts the command with the name `commandNameOverride`, or with this command's own name if that text is empty. If
    // `wait` is true, waits until the command has ended. Does not throw: the result code goes to `resultOut`, which may
    // be null. After a wait, the code is 17 (ExecutionFailed) if the command ended with an error.
    void execute(std::int32_t *resultOut, const std::string &commandNameOverride, bool wait) const;
    // Executes the command under its own name, and then calls checkResult with the result code.
    void execute(bool wait) const;
    // Unless the code is 0, throws LmLibException with the slot's path. If the constructor made a new slot, the
    // exception shares the ownership of this slot.
    void checkResult(std::int32_t code) const;

    // True if the command has ended or was never started. Queries the type of the node "Command". If the node exists,
    // queries its type once more. If the first query fails, the command counts as finished. If the second query fails,
    // the command counts as not finished. The result code of the last query goes to `resultOut`, which may be null. If
    // the node does not exist, this code is 0.
    bool finished(std::int32_t *resultOut = nullptr) const;
    // Queries the type of the node "ErrorSymbol" of the result. True if the node does not exist, or if the query fails.
    // The result code of the query goes to `resultOut`, which may be null. If the node does not exist, this code is 0.
    bool successful(std::int32_t *resultOut = nullptr) const;
    // Throws LmLibException with code 17 if the command has not finished, or if its result has an "ErrorSymbol". A
    // command that was never started counts as finished. If a query fails, the exception has the code of the query.
    void assertSuccessful() const;

private:
    TreeItem commandNode() const;
    std::int32_t waitForCompletion() const;

    std::string commandName;
    TreeItem slotItem;
    std::shared_ptr<TemporarySlot> temporarySlot;
};
