// One command of the camera library and its slot in the tree:
//
//   /Execute/<slot>/Command      the name; writing it starts the command, and it turns to null at the end
//   /Execute/<slot>/Parameters   written before the start
//   /Execute/<slot>/Result       written by the library; holds an "ErrorSymbol" exactly where the command failed
//
// What a command's parameters and results mean is the business of whoever runs it. Commands run one call at a
// time on the calling thread, and waiting for one blocks that thread without a time limit. A command may be
// executed again.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "lmlib/tree_item.h"

class TemporarySlot;

class TreeCommand {
public:
    // With a nodeName, the slot is the child of /Execute of that name and stays in the tree. Without one, a new
    // slot is made, which is erased when this command and every exception thrown for it are gone; throws
    // LmLibException with the path /Execute where that fails.
    explicit TreeCommand(std::string name, const std::string &nodeName = "");

    // The slot and its children "Parameters" and "Result". No library call.
    const TreeItem &slot() const { return slotItem; }
    TreeItem parameters() const;
    TreeItem result() const;

    // Starts the command, under another name unless the override is empty, and waits for its end if asked to.
    // Throws nothing for a failure: its code goes to resultOut, which may be null. A command that ended with an
    // error has the code 17 (ExecutionFailed).
    void execute(std::int32_t *resultOut, const std::string &commandNameOverride, bool wait) const;
    // As above under the command's own name, followed by checkResult.
    void execute(bool wait) const;
    // Does nothing for code 0; throws LmLibException with the slot's path and a share in the temporary slot for
    // any other.
    void checkResult(std::int32_t code) const;

    // Whether the command has ended, which one that was never started has, too. A query that fails is reported
    // in resultOut, which may be null; an absent node is no failure.
    bool finished(std::int32_t *resultOut = nullptr) const;
    // Whether the result holds no error symbol; resultOut as above. A failed query counts as success.
    bool successful(std::int32_t *resultOut = nullptr) const;
    // Throws LmLibException with code 17 unless the command is finished and successful, or with the code of a
    // query that fails on the way.
    void assertSuccessful() const;

private:
    TreeItem commandNode() const;
    std::int32_t waitForCompletion() const;

    std::string commandName;
    TreeItem slotItem;
    std::shared_ptr<TemporarySlot> temporarySlot;
};
