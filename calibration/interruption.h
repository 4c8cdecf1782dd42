// Lets work deep inside a calibration end early if the calibration is cancelled. Each thread stores the function that
// tells whether its calibration is cancelled, so the function need not be passed through every call. A new thread has
// no function yet. So whoever starts a thread that works for a calibration passes it the result of current(), and the
// new thread makes an Interruption with it.
#pragma once

#include <functional>

namespace calibration {

class Interruption {
public:
    // Stores the function for this thread until this object is destroyed. Then the thread has its earlier function
    // again. The function may be empty; then isWanted() is false.
    explicit Interruption(std::function<bool()> isCancelled);
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    // Returns the function of this thread; empty if there is none.
    static std::function<bool()> current();
    // True if this thread's work is to end.
    static bool isWanted();
    // Throws Cancelled if this thread's work is to end.
    static void check();

private:
    const std::function<bool()> question;
    const Interruption *const before;  // of this thread; null if there was none
};

}  // namespace calibration
