// Makes a chosen call of operator new fail. Link failing_allocation.cpp into the executable: it replaces the standard
// operator new in the whole process, including shared libraries.
#pragma once

#include <cstdint>

namespace failing_allocation {

enum class Failing { Once, FromThenOn };

// Starts to count the calls of operator new in all threads; the next one is number 1. The call with the number `call`
// fails: it throws std::bad_alloc, or returns null in the form with std::nothrow. If `failing` is FromThenOn, all later
// calls fail, too.
void arm(std::int64_t call, Failing failing);

// Stops counting calls and making them fail. Returns true if a call has failed.
bool disarm();

// While an object of this class exists, no call fails or is counted.
class Pause {
public:
    Pause();
    Pause(const Pause &) = delete;
    Pause &operator=(const Pause &) = delete;
    ~Pause();

private:
    bool wasArmed;
};

// The number of blocks that have been allocated and not freed.
std::int64_t blocksInUse();

}  // namespace failing_allocation
