#include "calibration/interruption.h"

#include <utility>

#include "calibration/calibrate.h"

namespace calibration {

namespace {

// This is a plain pointer, because no thread_local object may have a destructor: g++ for Windows frees the memory of
// thread_local objects before it calls their destructors.
thread_local const Interruption *innermost = nullptr;

}  // namespace

Interruption::Interruption(std::function<bool()> isCancelled)
    : question(std::move(isCancelled)), before(std::exchange(innermost, this)) {}

Interruption::~Interruption() {
    innermost = before;
}

std::function<bool()> Interruption::current() {
    return innermost != nullptr ? innermost->question : nullptr;
}

bool Interruption::isWanted() {
    return innermost != nullptr && innermost->question && innermost->question();
}

void Interruption::check() {
    if (isWanted()) {
        throw Cancelled();
    }
}

}  // namespace calibration
