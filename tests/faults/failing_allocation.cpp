#include "tests/faults/failing_allocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> isArmed{false};
std::atomic<bool> hasFailed{false};
std::atomic<bool> failsFromThenOn{false};
std::atomic<std::int64_t> callsLeft{0};
std::atomic<std::int64_t> inUse{0};

bool failsNow() {
    if (!isArmed) {
        return false;
    }
    const std::int64_t left = --callsLeft;
    const bool fails = left == 0 || (left < 0 && failsFromThenOn);
    if (fails) {
        hasFailed = true;
    }
    return fails;
}

void *allocate(std::size_t size) noexcept {
    void *block = failsNow() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block != nullptr) {
        ++inUse;
    }
    return block;
}

void *allocateOrThrow(std::size_t size) {
    void *block = allocate(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void release(void *block) noexcept {
    if (block != nullptr) {
        --inUse;
        std::free(block);
    }
}

}  // namespace

void *operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void *operator new[](std::size_t size) {
    return allocateOrThrow(size);
}
void *operator new(std::size_t size, const std::nothrow_t & /*tag*/) noexcept {
    return allocate(size);
}
void *operator new[](std::size_t size, const std::nothrow_t & /*tag*/) noexcept {
    return allocate(size);
}
void operator delete(void *block) noexcept {
    release(block);
}
void operator delete[](void *block) noexcept {
    release(block);
}
void operator delete(void *block, std::size_t /*size*/) noexcept {
    release(block);
}
void operator delete[](void *block, std::size_t /*size*/) noexcept {
    release(block);
}
void operator delete(void *block, const std::nothrow_t & /*tag*/) noexcept {
    release(block);
}
void operator delete[](void *block, const std::nothrow_t & /*tag*/) noexcept {
    release(block);
}

namespace failing_allocation {

void arm(std::int64_t call, Failing failing) {
    callsLeft = call;
    failsFromThenOn = failing == Failing::FromThenOn;
    hasFailed = false;
    isArmed = true;
}

bool disarm() {
    isArmed = false;
    return hasFailed;
}

Pause::Pause() : wasArmed(isArmed.exchange(false)) {}

Pause::~Pause() {
    isArmed = wasArmed;
}

std::int64_t blocksInUse() {
    return inUse;
}

}  // namespace failing_allocation
