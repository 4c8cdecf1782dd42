// Lets work deep inside a calibration end early if the calibration is cancelled. Each thread stores the function that
// tells whether it is cancelled, so the function need not be passed through every call. A thread that works for another
// thread takes over that thread's function.
#pragma once

#include <functional>

namespace calibration {

class Interruption {
public:
    // Until this object is destroyed, the thread that made it calls `isCancelled` to find out whether to end. The
    // function may be empty.
    explicit Interruption(std::function<bool()> isCancelled);
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    // Returns the function that this thread calls; empty if there is none.
    static const std::function<bool()> &current();
    // True if this thread's work is to end.
    static bool isWanted();
    // Throws Cancelled if this thread's work is to end.
    static void check();

private:
    std::function<bool()> before;
};

}  // namespace calibration
