// Implements the library's C interface. Every function answers from the scripted state.
#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <string>
#include <utility>

#include "camera_library/lmlib64.h"
#include "tests/scripted_lmlib64/library_state.h"

namespace {

using scripted_lmlib64::Binary;
using scripted_lmlib64::Call;
using scripted_lmlib64::Json;
using scripted_lmlib64::library;
using scripted_lmlib64::pointerTo;

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

template <typename Value>
void put(Value *target, Value value) {
    if (target != nullptr) {
        *target = value;
    }
}

// Keeps a returned text until the next call.
const char *kept(std::string text) {
    static std::string last;
    last = std::move(text);
    return last.c_str();  // NOLINT(clang-analyzer-cplusplus.InnerPointer): `last` outlives the call
}

// Does what all functions of the interface have in common. Records the call. If a result code is scripted for this
// call, reports this code and returns `failureValue`. Otherwise performs the action and returns its value. If the
// action throws because a node is missing or has another type, reports the code for this.
template <typename Value, typename Action>
Value answer(std::int32_t *result, const char *function, const char *path, const std::string &value,
             const Value &failureValue, Action action) {
    std::int32_t code = LmLibResultOperationSucceeded;
    Value returned = failureValue;
    try {
        const Call call{function, textOf(path), value, result != nullptr};
        library().record(call);
        if (const auto scripted = library().scriptedResult(call)) {
            code = *scripted;
        } else {
            returned = action(call.path);
        }
    } catch (const Json::out_of_range &) {
        code = LmLibResultItemInexistent;
    } catch (const Json::type_error &) {
        code = LmLibResultItemTypeNotCompatible;
    }
    put(result, code);
    return returned;
}

template <typename Action>
void perform(std::int32_t *result, const char *function, const char *path, const std::string &value, Action action) {
    answer(result, function, path, value, 0, [&](const std::string &at) {
        action(at);
        return 0;
    });
}

// Reads a node that must have the JSON type of Value.
template <typename Value>
Value read(std::int32_t *result, const char *function, const char *path) {
    return answer<Value>(result, function, path, "", Value(),
                         [](const std::string &at) { return library().at(at).get<Value>(); });
}

template <typename Text>
const char *answerText(std::int32_t *result, const char *function, const char *path, const std::string &value,
                       Text text) {
    return answer<const char *>(result, function, path, value, nullptr,
                                [&](const std::string &at) { return kept(text(at)); });
}

void write(std::int32_t *result, const char *function, const char *path, const std::string &text, const Json &value) {
    perform(result, function, path, text, [&](const std::string &at) { library().nodes[pointerTo(at)] = value; });
}

std::int32_t typeOf(const Json &node) {
    static const std::map<Json::value_t, std::int32_t> types = {
        {Json::value_t::null, LmLibTypeNull},       {Json::value_t::string, LmLibTypeString},
        {Json::value_t::boolean, LmLibTypeBoolean}, {Json::value_t::object, LmLibTypeObject},
        {Json::value_t::array, LmLibTypeArray},     {Json::value_t::binary, LmLibTypeBinary}};
    return node.is_number() ? LmLibTypeNumber : types.at(node.type());
}

// True if the path is of the form "/Execute/SLOT/Command".
bool isCommand(const std::string &path) {
    const std::string start = "/Execute/";
    const std::size_t slotEnd = path.find('/', start.size());
    return path.compare(0, start.size(), start) == 0 && slotEnd != std::string::npos &&
           path.compare(slotEnd, std::string::npos, "/Command") == 0;
}

}  // namespace

const char *lmLibGetString(int32_t *result, const char *path) {
    return answerText(result, "lmLibGetString", path, "",
                      [](const std::string &at) { return library().at(at).get<std::string>(); });
}

void lmLibSetString(int32_t *result, const char *path, const char *text) {
    perform(result, "lmLibSetString", path, textOf(text), [&](const std::string &at) {
        library().nodes[pointerTo(at)] = textOf(text);
        if (isCommand(at)) {
            library().finishCommand(at);
        }
    });
}

int32_t lmLibGetInt(int32_t *result, const char *path) {
    return read<std::int32_t>(result, "lmLibGetInt", path);
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

// For true, returns a number that is neither 0 nor 1, because clients must accept every number except 0 as true.
int32_t lmLibGetBool(int32_t *result, const char *path) {
    return read<bool>(result, "lmLibGetBool", path) ? 2 : 0;
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
    return answerText(result, "lmLibGetJson", path, value,
                      [&](const std::string &at) { return library().at(at).dump(prettyPrint != 0 ? 2 : -1); });
}

int32_t lmLibGetType(int32_t *result, const char *path) {
    return answer<int32_t>(result, "lmLibGetType", path, "", LmLibTypeAbsent,
                           [](const std::string &at) { return typeOf(library().at(at)); });
}

int32_t lmLibGetCount(int32_t *result, const char *path) {
    return answer<int32_t>(result, "lmLibGetCount", path, "", 0, [](const std::string &at) {
        const Json &node = library().at(at);
        return static_cast<int32_t>(node.is_binary() ? library().binaryAt(at).bytes.size() : node.size());
    });
}

const char *lmLibGetName(int32_t *result, const char *path) {
    return answerText(result, "lmLibGetName", path, "", [](const std::string &at) { return pointerTo(at).back(); });
}

void lmLibErase(int32_t *result, const char *path) {
    perform(result, "lmLibErase", path, "", [](const std::string &at) {
        library().at(at);
        library().nodes[pointerTo(at).parent_pointer()].erase(pointerTo(at).back());
    });
}

const char *lmLibMakeUniqueItem(int32_t *result, const char *parentPath, const char *baseName) {
    return answerText(result, "lmLibMakeUniqueItem", parentPath, textOf(baseName), [&](const std::string &at) {
        const std::string path = at + "/" + textOf(baseName) + std::to_string(++library().lastUniqueNumber);
        library().nodes[pointerTo(path)] = Json::object();
        return path;
    });
}

void lmLibWaitForType(int32_t *result, const char *path, int32_t type, int32_t waitForChange) {
    perform(result, "lmLibWaitForType", path, std::to_string(type) + " " + textOf(waitForChange != 0),
            [](const std::string &) {});
}

void lmLibGetBinaryInfo(int32_t *result, const char *path, int32_t *width, int32_t *height, int32_t *channelCount,
                        int32_t *bytesPerElement, int32_t *isFloat, double *timestamp) {
    // The program must not ask for the bytes per element or the timestamp, because it does not need them. If a caller
    // asks for one of them, the word "more" is recorded with the call.
    const bool asksForMore = bytesPerElement != nullptr || timestamp != nullptr;
    perform(result, "lmLibGetBinaryInfo", path, asksForMore ? "more" : "", [&](const std::string &at) {
        const Binary &binary = library().binaryAt(at);
        put(width, binary.width);
        put(height, binary.height);
        put(channelCount, binary.channelCount);
        put(isFloat, 0);
    });
}

void lmLibGetBinary(int32_t *result, const char *path, void *destination, int32_t destinationSize, int32_t *bytesCopied,
                    double *timestamp) {
    const std::string value = std::to_string(destinationSize) + (timestamp == nullptr ? "" : " timestamp");
    perform(result, "lmLibGetBinary", path, value, [&](const std::string &at) {
        const Binary &binary = library().binaryAt(at);
        std::copy(binary.bytes.begin(), binary.bytes.end(), static_cast<unsigned char *>(destination));
        put(bytesCopied, static_cast<int32_t>(binary.bytes.size()));
    });
}

void lmLibWriteDebugMessage(int32_t *result, const char *message) {
    perform(result, "lmLibWriteDebugMessage", "", textOf(message), [](const std::string &) {});
}

// Intentionally leaves the tree unchanged, so that a test can inspect it.
void lmLibFinalize(int32_t *result) {
    perform(result, "lmLibFinalize", "", "", [](const std::string &) {});
}
