// The library's C interface, which answers from the scripted state.
#include <array>
#include <charconv>
#include <cstring>
#include <string>
#include <utility>

#include "camera_library/lmlib64.h"
#include "tests/scripted_lmlib64/library_state.h"

namespace {

using scripted_lmlib64::Binary;
using scripted_lmlib64::Call;
using scripted_lmlib64::Failure;
using scripted_lmlib64::Json;
using scripted_lmlib64::LibraryState;

std::string textOf(const char *text) {
    return text == nullptr ? std::string() : std::string(text);
}

const char *textOf(bool value) {
    return value ? "true" : "false";
}

std::string textOf(double value) {
    std::array<char, 64> buffer{};
    const std::to_chars_result end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), end.ptr};
}

// " name" if the caller passed a target for this value, otherwise nothing.
std::string requested(const void *target, const char *name) {
    return target == nullptr ? std::string() : " " + std::string(name);
}

template <typename Value>
void put(Value *target, Value value) {
    if (target != nullptr) {
        *target = value;
    }
}

// Keeps a returned text until the calling thread's next call.
const char *kept(std::string text) {
    thread_local std::string last;
    last = std::move(text);
    return last.c_str();  // NOLINT(clang-analyzer-cplusplus.InnerPointer): it outlives the call
}

// What every function does: it records the call, returns the scripted result or performs the action, and turns every
// exception into a result code.
template <typename Value, typename Action>
Value answer(std::int32_t *result, const char *function, const char *path, const std::string &value,
             const Value &failureValue, Action action) {
    LibraryState &state = LibraryState::instance();
    std::int32_t code = LmLibResultOperationSucceeded;
    Value returned = failureValue;
    try {
        const Call call{function, textOf(path), value, result != nullptr};
        if (const auto observer = state.record(call)) {
            observer(call);
        }
        const std::lock_guard<std::mutex> lock(state.mutex);
        if (const auto scripted = state.scriptedResult(call)) {
            code = *scripted;
        } else {
            returned = action(state, call.path);
        }
    } catch (const Failure &failure) {
        code = failure.code;
    } catch (const Json::out_of_range &) {
        code = LmLibResultItemInexistent;
    } catch (const Json::type_error &) {
        code = LmLibResultItemTypeNotCompatible;
    } catch (...) {
        code = LmLibResultInternalError;
    }
    put(result, code);
    return returned;
}

template <typename Action>
void perform(std::int32_t *result, const char *function, const char *path, const std::string &value, Action action) {
    answer(result, function, path, value, 0, [&](LibraryState &state, const std::string &at) {
        action(state, at);
        return 0;
    });
}

// Reads a node that must have the JSON type of Value.
template <typename Value>
Value read(std::int32_t *result, const char *function, const char *path) {
    return answer<Value>(result, function, path, "", Value(), [](const LibraryState &state, const std::string &at) {
        return state.tree.at(at).get<Value>();
    });
}

void write(std::int32_t *result, const char *function, const char *path, const std::string &text, const Json &value) {
    perform(result, function, path, text,
            [&](LibraryState &state, const std::string &at) { state.tree.set(at, value); });
}

}  // namespace

const char *lmLibGetString(int32_t *result, const char *path) {
    return answer<const char *>(
        result, "lmLibGetString", path, "", nullptr,
        [](const LibraryState &state, const std::string &at) { return kept(state.tree.at(at).get<std::string>()); });
}

void lmLibSetString(int32_t *result, const char *path, const char *text) {
    perform(result, "lmLibSetString", path, textOf(text),
            [&](LibraryState &state, const std::string &at) { state.writeString(at, textOf(text)); });
}

int32_t lmLibGetInt(int32_t *result, const char *path) {
    return static_cast<int32_t>(read<Json::number_integer_t>(result, "lmLibGetInt", path));
}

void lmLibSetInt(int32_t *result, const char *path, int32_t value) {
    write(result, "lmLibSetInt", path, std::to_string(value), value);
}

double lmLibGetDouble(int32_t *result, const char *path) {
    return read<double>(result, "lmLibGetDouble", path);
}

void lmLibSetDouble(int32_t *result, const char *path, double value) {
    write(result, "lmLibSetDouble", path, textOf(value), value);
}

int32_t lmLibGetBool(int32_t *result, const char *path) {
    return read<bool>(result, "lmLibGetBool", path) ? 1 : 0;
}

void lmLibSetBool(int32_t *result, const char *path, int32_t value) {
    write(result, "lmLibSetBool", path, textOf(value != 0), value != 0);
}

void lmLibSetNull(int32_t *result, const char *path) {
    write(result, "lmLibSetNull", path, "", nullptr);
}

const char *lmLibGetJson(int32_t *result, const char *path, int32_t prettyPrint, int32_t numberPrecision,
                         int32_t allowScientificFormat) {
    const std::string value = std::string(textOf(prettyPrint != 0)) + " " + std::to_string(numberPrecision) + " " +
                              textOf(allowScientificFormat != 0);
    return answer<const char *>(
        result, "lmLibGetJson", path, value, nullptr, [&](const LibraryState &state, const std::string &at) {
            return kept(state.tree.at(at).dump(prettyPrint != 0 ? 2 : -1, ' ', false, Json::error_handler_t::replace));
        });
}

int32_t lmLibGetType(int32_t *result, const char *path) {
    return answer<int32_t>(result, "lmLibGetType", path, "", LmLibTypeAbsent,
                           [](const LibraryState &state, const std::string &at) { return state.tree.typeAt(at); });
}

int32_t lmLibGetCount(int32_t *result, const char *path) {
    return answer<int32_t>(result, "lmLibGetCount", path, "", 0, [](const LibraryState &state, const std::string &at) {
        const Json &node = state.tree.at(at);
        if (!node.is_structured() && !node.is_binary()) {
            throw Failure{LmLibResultItemTypeNotCompatible};
        }
        return static_cast<int32_t>(node.is_binary() ? state.tree.binaryAt(at).bytes.size() : node.size());
    });
}

const char *lmLibGetName(int32_t *result, const char *path) {
    return answer<const char *>(result, "lmLibGetName", path, "", nullptr,
                                [](const LibraryState &state, const std::string &at) {
                                    state.tree.at(at);
                                    return kept(scripted_lmlib64::NodeTree::nameOf(at));
                                });
}

void lmLibErase(int32_t *result, const char *path) {
    perform(result, "lmLibErase", path, "", [](LibraryState &state, const std::string &at) { state.tree.erase(at); });
}

const char *lmLibMakeUniqueItem(int32_t *result, const char *parentPath, const char *baseName) {
    return answer<const char *>(
        result, "lmLibMakeUniqueItem", parentPath, textOf(baseName), nullptr,
        [&](LibraryState &state, const std::string &at) { return kept(state.makeUniqueItem(at, textOf(baseName))); });
}

void lmLibWaitForType(int32_t *result, const char *path, int32_t type, int32_t waitForChange) {
    perform(result, "lmLibWaitForType", path, std::to_string(type) + " " + textOf(waitForChange != 0),
            [&](LibraryState &state, const std::string &at) { state.waitForType(at, type, waitForChange != 0); });
}

void lmLibGetBinaryInfo(int32_t *result, const char *path, int32_t *width, int32_t *height, int32_t *channelCount,
                        int32_t *bytesPerElement, int32_t *isFloat, double *timestamp) {
    std::string targets = requested(width, "width") + requested(height, "height") +
                          requested(channelCount, "channelCount") + requested(bytesPerElement, "bytesPerElement") +
                          requested(isFloat, "isFloat") + requested(timestamp, "timestamp");
    targets.erase(0, 1);
    perform(result, "lmLibGetBinaryInfo", path, targets, [&](const LibraryState &state, const std::string &at) {
        const Binary &binary = state.tree.binaryAt(at);
        put(width, binary.width);
        put(height, binary.height);
        put(channelCount, binary.channelCount);
        put(bytesPerElement, 1);
        put(isFloat, 0);
        put(timestamp, 0.0);
    });
}

void lmLibGetBinary(int32_t *result, const char *path, void *destination, int32_t destinationSize, int32_t *bytesCopied,
                    double *timestamp) {
    const std::string value =
        std::to_string(destinationSize) + requested(bytesCopied, "bytesCopied") + requested(timestamp, "timestamp");
    perform(result, "lmLibGetBinary", path, value, [&](const LibraryState &state, const std::string &at) {
        const Binary &binary = state.tree.binaryAt(at);
        if (destinationSize < static_cast<int32_t>(binary.bytes.size())) {
            throw Failure{LmLibResultBufferTooSmall};
        }
        if (destination != nullptr && !binary.bytes.empty()) {
            std::memcpy(destination, binary.bytes.data(), binary.bytes.size());
        }
        put(bytesCopied, static_cast<int32_t>(binary.bytes.size()));
        put(timestamp, 0.0);
    });
}

void lmLibWriteDebugMessage(int32_t *result, const char *message) {
    perform(result, "lmLibWriteDebugMessage", "", textOf(message), [](LibraryState &, const std::string &) {});
}

// Intentionally leaves the tree unchanged, so that a test can inspect it.
void lmLibFinalize(int32_t *result) {
    perform(result, "lmLibFinalize", "", "", [](LibraryState &, const std::string &) {});
}
