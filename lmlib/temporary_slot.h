// Owns a command's temporary slot in the library's tree, and erases the slot when it is destroyed. The command and
// every exception thrown for it share one TemporarySlot through std::shared_ptr. So the result of a failed command can
// be read until the failure has been shown. If the caller of a command chooses the slot's name, the slot has no owner
// and stays in the tree.
//
// The last owner may be destroyed on any thread.
#pragma once

#include <string>

class TemporarySlot {
public:
    // Becomes the owner of the slot at this path; an empty path means no slot.
    explicit TemporarySlot(std::string slotPath);
    // Erases the slot. Never throws. A slot that has already been erased is not a failure; any other failure is only
    // written to the library's debug log.
    ~TemporarySlot();

    TemporarySlot(const TemporarySlot &) = delete;
    TemporarySlot &operator=(const TemporarySlot &) = delete;

private:
    void release() noexcept;

    std::string path;
};
