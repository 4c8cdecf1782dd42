// If a calibration is cancelled, the work deep inside it can end early. Each thread stores the function that tells
// whether its calibration is cancelled, so the function need not be passed through every call. A new thread has no
// function yet. Code that starts a thread for a calibration therefore passes the result of current() to the new thread,
// and the new thread makes an Interruption with this function.
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
    const Interruption *const before;  // the one that this thread had before; null if it had none
};

}  // namespace calibration
