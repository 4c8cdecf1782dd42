// The process's operator new, of which a chosen call fails. Link failing_allocation.cpp into the executable; it
// then takes the place of the standard one everywhere, in shared libraries too.
#pragma once

#include <cstdint>

namespace failing_allocation {

enum class Failing { Once, FromThenOn };

// Counts the calls of every thread from 1 again and lets that call fail with std::bad_alloc, or it and all after.
void arm(std::int64_t call, Failing failing);

// No call fails or is counted any more. Returns whether one has failed.
bool disarm();

// While one of these lives, no call fails or is counted.
class Pause {
public:
    Pause();
    Pause(const Pause &) = delete;
    Pause &operator=(const Pause &) = delete;
    ~Pause();

private:
    bool wasArmed;
};

// Blocks that operator new has given out and that have not come back.
std::int64_t blocksInUse();

}  // namespace failing_allocation
