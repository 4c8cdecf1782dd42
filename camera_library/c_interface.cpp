// Defines the functions of lmlib64.h. Only this file converts arguments and results between C and C++. guard() lets no
// exception through.
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "camera_library/library.h"
#include "camera_library/lmlib64.h"
#include "camera_library/platform/returned_text.h"
#include "camera_library/tree/json_text.h"

namespace {

using lmlib64::Binary;
using lmlib64::Library;
using lmlib64::Node;
using lmlib64::returnedText;

// Runs the operation. Sets the result to the code that the operation returns, or to LmLibResultInternalError if it
// throws. Returns true on success.
template <typename Operation>
bool guard(std::int32_t *result, Operation operation) noexcept {
    LmLibResult code = LmLibResultInternalError;
    try {
        code = operation(Library::instance());
    } catch (...) {
        code = LmLibResultInternalError;
    }
    if (result != nullptr) {
        *result = code;
    }
    return code == LmLibResultOperationSucceeded;
}

std::string_view textOf(const char *text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

// Sets `value` to the node's value if the node is a leaf of this type.
template <typename Value>
LmLibResult valueOf(const Node &node, Value &value) {
    const Value *held = std::get_if<Value>(&node.value);
    if (held == nullptr) {
        return LmLibResultItemTypeNotCompatible;
    }
    value = *held;
    return LmLibResultOperationSucceeded;
}

template <typename Value>
LmLibResult readValue(const Library &library, const char *path, Value &value) {
    return library.tree.read(textOf(path), [&value](const Node &node) { return valueOf(node, value); });
}

LmLibResult countOf(const Node &node, std::size_t &count) {
    if (const auto *object = std::get_if<lmlib64::NodeObject>(&node.value)) {
        count = object->size();
    } else if (const auto *array = std::get_if<lmlib64::NodeArray>(&node.value)) {
        count = array->size();
    } else if (const auto *binary = std::get_if<lmlib64::NodeBinary>(&node.value)) {
        count = (*binary)->bytes.size();
    } else {
        return LmLibResultItemTypeNotCompatible;
    }
    return count <= std::numeric_limits<std::int32_t>::max() ? LmLibResultOperationSucceeded : LmLibResultInternalError;
}

template <typename Value>
void passOut(Value *target, Value value) {
    if (target != nullptr) {
        *target = value;
    }
}

}  // namespace

const char *lmLibGetString(int32_t *result, const char *path) {
    const char *text = nullptr;
    guard(result, [&](const Library &library) {
        std::string &returned = returnedText();
        const LmLibResult code = readValue(library, path, returned);
        if (code == LmLibResultOperationSucceeded) {
            text = returned.c_str();
        }
        return code;
    });
    return text;
}

void lmLibSetString(int32_t *result, const char *path, const char *text) {
    guard(result, [&](Library &library) {
        const std::string_view slot = lmlib64::Tree::slotOfCommand(textOf(path));
        return slot.empty() ? library.tree.write(textOf(path), std::string(textOf(text)))
                            : library.executor.start(slot, textOf(text));
    });
}

int32_t lmLibGetInt(int32_t *result, const char *path) {
    std::int32_t value = 0;
    guard(result, [&](const Library &library) {
        double number = 0.0;
        const LmLibResult code = readValue(library, path, number);
        if (code != LmLibResultOperationSucceeded) {
            return code;
        }
        const bool whole = number >= std::numeric_limits<std::int32_t>::min() &&
                           number <= std::numeric_limits<std::int32_t>::max() && number == std::trunc(number);
        if (!whole) {
            return LmLibResultItemTypeNotCompatible;
        }
        value = static_cast<std::int32_t>(number);
        return code;
    });
    return value;
}

void lmLibSetInt(int32_t *result, const char *path, int32_t value) {
    guard(result, [&](Library &library) { return library.tree.write(textOf(path), value); });
}

double lmLibGetDouble(int32_t *result, const char *path) {
    double value = 0.0;
    guard(result, [&](const Library &library) { return readValue(library, path, value); });
    return value;
}

void lmLibSetDouble(int32_t *result, const char *path, double value) {
    guard(result, [&](Library &library) { return library.tree.write(textOf(path), value); });
}

int32_t lmLibGetBool(int32_t *result, const char *path) {
    bool value = false;
    guard(result, [&](const Library &library) { return readValue(library, path, value); });
    return value ? 1 : 0;
}

void lmLibSetBool(int32_t *result, const char *path, int32_t value) {
    guard(result, [&](Library &library) { return library.tree.write(textOf(path), value != 0); });
}

void lmLibSetNull(int32_t *result, const char *path) {
    guard(result, [&](Library &library) { return library.tree.write(textOf(path), Node()); });
}

const char *lmLibGetJson(int32_t *result, const char *path, int32_t prettyPrint, int32_t numberPrecision,
                         int32_t allowScientificFormat) {
    const char *text = nullptr;
    guard(result, [&](const Library &library) {
        if (numberPrecision < 0 || numberPrecision > lmlib64::maximumJsonPrecision) {
            return LmLibResultInvalidParameters;
        }
        std::string json;
        const LmLibResult code = library.tree.read(textOf(path), [&](const Node &node) {
            lmlib64::appendJson(json, node, {prettyPrint != 0, numberPrecision, allowScientificFormat != 0});
            return LmLibResultOperationSucceeded;
        });
        if (code == LmLibResultOperationSucceeded) {
            std::string &returned = returnedText();
            returned = std::move(json);
            text = returned.c_str();
        }
        return code;
    });
    return text;
}

void lmLibSetJson(int32_t *result, const char *path, const char *json) {
    guard(result, [&](Library &library) {
        lmlib64::Path parsed;
        LmLibResult code = lmlib64::Path::parse(textOf(path), parsed);
        Node node;
        if (code == LmLibResultOperationSucceeded) {
            code = lmlib64::parseJson(textOf(json), LMLIB_MAXIMUM_DEPTH - parsed.depth(), node);
        }
        return code == LmLibResultOperationSucceeded ? library.tree.write(textOf(path), std::move(node)) : code;
    });
}

int32_t lmLibGetType(int32_t *result, const char *path) {
    LmLibType type = LmLibTypeAbsent;
    guard(result, [&](const Library &library) {
        return library.tree.read(textOf(path), [&](const Node &node) {
            type = node.type();
            return LmLibResultOperationSucceeded;
        });
    });
    return type;
}

int32_t lmLibGetCount(int32_t *result, const char *path) {
    std::size_t count = 0;
    const bool counted = guard(result, [&](const Library &library) {
        return library.tree.read(textOf(path), [&](const Node &node) { return countOf(node, count); });
    });
    return counted ? static_cast<std::int32_t>(count) : 0;
}

const char *lmLibGetName(int32_t *result, const char *path) {
    const char *text = nullptr;
    guard(result, [&](const Library &library) {
        const LmLibResult code =
            library.tree.read(textOf(path), [](const Node & /*node*/) { return LmLibResultOperationSucceeded; });
        if (code != LmLibResultOperationSucceeded) {
            return code;
        }
        lmlib64::Path parsed;
        lmlib64::Path::parse(textOf(path), parsed);
        std::string name;
        for (const lmlib64::PathPart &part : parsed) {
            name = part.name;
        }
        // `path` may point to the text in returnedText(), which the library last returned to this thread. So this text
        // is replaced only after `path` has been read.
        std::string &returned = returnedText();
        returned = std::move(name);
        text = returned.c_str();
        return code;
    });
    return text;
}

void lmLibErase(int32_t *result, const char *path) {
    guard(result, [&](Library &library) { return library.tree.erase(textOf(path)); });
}

const char *lmLibMakeUniqueItem(int32_t *result, const char *parentPath, const char *baseName) {
    const char *text = nullptr;
    guard(result, [&](Library &library) {
        std::string &returned = returnedText();
        std::string item;
        const LmLibResult code = library.tree.makeUniqueItem(textOf(parentPath), textOf(baseName), item);
        if (code == LmLibResultOperationSucceeded) {
            returned = std::move(item);
            text = returned.c_str();
        }
        return code;
    });
    return text;
}

void lmLibWaitForType(int32_t *result, const char *path, int32_t type, int32_t waitForChange) {
    guard(result, [&](Library &library) {
        if (type < LmLibTypeAbsent || type > LmLibTypeBinary) {
            return LmLibResultInvalidParameters;
        }
        return library.tree.waitForType(textOf(path), static_cast<LmLibType>(type), waitForChange != 0);
    });
}

void lmLibGetBinaryInfo(int32_t *result, const char *path, int32_t *width, int32_t *height, int32_t *channelCount,
                        int32_t *bytesPerElement, int32_t *isFloat, double *timestamp) {
    const Binary none{0, 0, 0, 0, false, 0.0, {}};
    lmlib64::NodeBinary binary;
    const bool found = guard(result, [&](const Library &library) { return readValue(library, path, binary); });
    const Binary &format = found ? *binary : none;
    passOut(width, format.width);
    passOut(height, format.height);
    passOut(channelCount, format.channelCount);
    passOut(bytesPerElement, format.bytesPerElement);
    passOut(isFloat, static_cast<std::int32_t>(format.isFloat ? 1 : 0));
    passOut(timestamp, format.timestamp);
}

void lmLibGetBinary(int32_t *result, const char *path, void *destination, int32_t destinationSize, int32_t *bytesCopied,
                    double *timestamp) {
    std::size_t copied = 0;
    double made = 0.0;
    guard(result, [&](const Library &library) {
        if (destinationSize < 0) {
            return LmLibResultInvalidBufferSize;
        }
        lmlib64::NodeBinary binary;
        const LmLibResult code = readValue(library, path, binary);
        if (code != LmLibResultOperationSucceeded) {
            return code;
        }
        if (binary->bytes.size() > static_cast<std::size_t>(destinationSize)) {
            return LmLibResultBufferTooSmall;
        }
        if (!binary->bytes.empty()) {
            if (destination == nullptr) {
                return LmLibResultInvalidParameters;
            }
            std::memcpy(destination, binary->bytes.data(), binary->bytes.size());
        }
        copied = binary->bytes.size();
        made = binary->timestamp;
        return code;
    });
    passOut(bytesCopied, static_cast<std::int32_t>(copied));
    passOut(timestamp, made);
}

void lmLibWriteDebugMessage(int32_t *result, const char *message) {
    guard(result, [&](Library &library) { return library.debugLog.write(textOf(message)); });
}

const char *lmLibGetDebugBuffer(int32_t *result) {
    const char *text = nullptr;
    guard(result, [&](const Library &library) {
        std::string &returned = returnedText();
        const LmLibResult code = library.debugLog.read(returned);
        if (code == LmLibResultOperationSucceeded) {
            text = returned.c_str();
        }
        return code;
    });
    return text;
}

void lmLibFinalize(int32_t *result) {
    guard(result, [&](Library &library) {
        library.finalize();
        std::string().swap(returnedText());
        return LmLibResultOperationSucceeded;
    });
}
