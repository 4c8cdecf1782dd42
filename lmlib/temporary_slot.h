// The guard of a command's temporary slot in the library's tree. A command and every exception thrown for it
// hold it together through std::shared_ptr, so that a failed command's result stays readable until its report
// has been shown; when the last of them lets go, the slot is erased. Named slots have no such guard.
//
// Owners may let go in any order and on any thread: the count is the shared pointer's, which is atomic.
#pragma once

#include <string>

class TemporarySlot {
public:
    // Takes charge of the slot at this path; an empty path stands for no slot.
    explicit TemporarySlot(std::string slotPath);
    // Erases the slot. Never throws: a slot that is gone already is fine, and any other failure only leaves its
    // line in the library's debug log.
    ~TemporarySlot();

    TemporarySlot(const TemporarySlot &) = delete;
    TemporarySlot &operator=(const TemporarySlot &) = delete;

private:
    void release() noexcept;

    std::string path;
};
