// Lets work deep inside a calibration end early, without handing the question through every function. Each thread has
// its own; a thread that works for another one takes over its question.
#pragma once

#include <functional>

namespace calibration {

class Interruption {
public:
    // Until this object is destroyed, its thread asks this function, which may be empty.
    explicit Interruption(std::function<bool()> isCancelled);
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    // The question of this thread; empty if it has none.
    static const std::function<bool()> &current();
    // True if this thread's work is to end.
    static bool isWanted();
    // Throws Cancelled if this thread's work is to end.
    static void check();

private:
    std::function<bool()> before;
};

}  // namespace calibration
