#include "calibration/interruption.h"

#include <utility>

#include "calibration/calibrate.h"

namespace calibration {

namespace {

std::function<bool()> &question() {
    thread_local std::function<bool()> ofThisThread;
    return ofThisThread;
}

}  // namespace

Interruption::Interruption(std::function<bool()> isCancelled)
    : before(std::exchange(question(), std::move(isCancelled))) {}

Interruption::~Interruption() {
    question() = std::move(before);
}

const std::function<bool()> &Interruption::current() {
    return question();
}

bool Interruption::isWanted() {
    return question() && question()();
}

void Interruption::check() {
    if (isWanted()) {
        throw Cancelled();
    }
}

}  // namespace calibration
