#include "tests/faults/faulting_lmlib64.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

using faulting_lmlib64::FailedCall;
using faulting_lmlib64::Fault;

// Pixels; the program's own pictures are two thousand.
constexpr std::int32_t greatestImageSize = 60;

struct State {
    Fault fault;
    std::int64_t calls = 0;
    std::optional<FailedCall> failed;
};

State &state() {
    static State state;
    return state;
}

template <typename Function>
Function *real(const char *name) {
    static void *const library = [] {
        void *opened = dlopen(REAL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        if (opened == nullptr) {
            std::fprintf(stderr, "%s\n", dlerror());
            std::abort();
        }
        return opened;
    }();
    return reinterpret_cast<Function *>(dlsym(library, name));
}

std::string textOf(const char *text) {
    return text == nullptr ? std::string() : std::string(text);
}

bool endsIn(const std::string &text, const std::string &ending) {
    return text.size() >= ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

// Counts the call and says whether it fails.
bool fails(const char *function, const char *path, bool hasResult) {
    State &current = state();
    ++current.calls;
    if (current.calls == current.fault.call) {
        current.failed = FailedCall{function, textOf(path), hasResult};
        return true;
    }
    return false;
}

template <typename Returned, typename... Parameters, typename... Arguments>
Returned forward(const char *name, Returned (*function)(std::int32_t *, Parameters...), std::int32_t *result,
                 const char *path, Arguments... arguments) {
    if (!fails(name, path, result != nullptr)) {
        return function(result, arguments...);
    }
    if (result != nullptr) {
        *result = state().fault.code;
    }
    return Returned();
}

}  // namespace

// The path is what the call is known by; what follows are all arguments behind the result.
#define FORWARD(function, path, ...) forward(#function, real<decltype(function)>(#function), result, path, __VA_ARGS__)

const char *lmLibGetString(int32_t *result, const char *path) {
    return FORWARD(lmLibGetString, path, path);
}

void lmLibSetString(int32_t *result, const char *path, const char *text) {
    FORWARD(lmLibSetString, path, path, text);
    if (endsIn(textOf(path), "/Command")) {
        real<decltype(lmLibWaitForType)>("lmLibWaitForType")(nullptr, path, LmLibTypeNull, 1);
    }
}

int32_t lmLibGetInt(int32_t *result, const char *path) {
    return FORWARD(lmLibGetInt, path, path);
}

void lmLibSetInt(int32_t *result, const char *path, int32_t value) {
    FORWARD(lmLibSetInt, path, path, endsIn(textOf(path), "/ImageSize") ? std::min(value, greatestImageSize) : value);
}

double lmLibGetDouble(int32_t *result, const char *path) {
    return FORWARD(lmLibGetDouble, path, path);
}

void lmLibSetDouble(int32_t *result, const char *path, double value) {
    FORWARD(lmLibSetDouble, path, path, value);
}

int32_t lmLibGetBool(int32_t *result, const char *path) {
    return FORWARD(lmLibGetBool, path, path);
}

void lmLibSetBool(int32_t *result, const char *path, int32_t value) {
    FORWARD(lmLibSetBool, path, path, value);
}

void lmLibSetNull(int32_t *result, const char *path) {
    FORWARD(lmLibSetNull, path, path);
}

const char *lmLibGetJson(int32_t *result, const char *path, int32_t prettyPrint, int32_t numberPrecision,
                         int32_t allowScientificFormat) {
    return FORWARD(lmLibGetJson, path, path, prettyPrint, numberPrecision, allowScientificFormat);
}

void lmLibSetJson(int32_t *result, const char *path, const char *json) {
    FORWARD(lmLibSetJson, path, path, json);
}

int32_t lmLibGetType(int32_t *result, const char *path) {
    return FORWARD(lmLibGetType, path, path);
}

int32_t lmLibGetCount(int32_t *result, const char *path) {
    return FORWARD(lmLibGetCount, path, path);
}

const char *lmLibGetName(int32_t *result, const char *path) {
    return FORWARD(lmLibGetName, path, path);
}

void lmLibErase(int32_t *result, const char *path) {
    FORWARD(lmLibErase, path, path);
}

const char *lmLibMakeUniqueItem(int32_t *result, const char *parentPath, const char *baseName) {
    return FORWARD(lmLibMakeUniqueItem, parentPath, parentPath, baseName);
}

void lmLibWaitForType(int32_t *result, const char *path, int32_t type, int32_t waitForChange) {
    FORWARD(lmLibWaitForType, path, path, type, waitForChange);
}

void lmLibGetBinaryInfo(int32_t *result, const char *path, int32_t *width, int32_t *height, int32_t *channelCount,
                        int32_t *bytesPerElement, int32_t *isFloat, double *timestamp) {
    FORWARD(lmLibGetBinaryInfo, path, path, width, height, channelCount, bytesPerElement, isFloat, timestamp);
}

void lmLibGetBinary(int32_t *result, const char *path, void *destination, int32_t destinationSize, int32_t *bytesCopied,
                    double *timestamp) {
    FORWARD(lmLibGetBinary, path, path, destination, destinationSize, bytesCopied, timestamp);
}

void lmLibWriteDebugMessage(int32_t *result, const char *message) {
    FORWARD(lmLibWriteDebugMessage, "", message);
}

const char *lmLibGetDebugBuffer(int32_t *result) {
    return forward("lmLibGetDebugBuffer", real<decltype(lmLibGetDebugBuffer)>("lmLibGetDebugBuffer"), result, "");
}

void lmLibFinalize(int32_t *result) {
    forward("lmLibFinalize", real<decltype(lmLibFinalize)>("lmLibFinalize"), result, "");
}

namespace faulting_lmlib64 {

void setFault(const Fault &fault) {
    state() = State{fault, 0, {}};
}

std::int64_t callCount() {
    return state().calls;
}

std::optional<FailedCall> failedCall() {
    return state().failed;
}

std::int32_t realChildCount(const std::string &path) {
    return real<decltype(lmLibGetCount)>("lmLibGetCount")(nullptr, path.c_str());
}

void realFinalize() {
    real<decltype(lmLibFinalize)>("lmLibFinalize")(nullptr);
}

}  // namespace faulting_lmlib64
