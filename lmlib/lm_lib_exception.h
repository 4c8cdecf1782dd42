// The only exception type for failures of the camera library. It holds the item, the result code and the slot of the
// failed command. How a failure is shown is decided elsewhere.
//
// It is thrown by value and caught by constant reference. It has no base class, so only a handler that names it (or
// catches everything) catches it. Texts are in the library's narrow encoding.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

class TemporarySlot;

// Intentionally not a std::exception.
class LmLibException {
public:
    // Also writes "LmLibException <name> at <path>" to the library's debug log.
    LmLibException(std::string path, std::int32_t code, std::shared_ptr<TemporarySlot> slot);

    // "ErrorSymbol" and "ErrorText" that a failed command left in the result below itemPath. They throw LmLibException
    // if there are none.
    std::string errorSymbol() const;
    std::string errorText() const;

    // The item accessed, or the slot of a failed command; empty if the library as a whole failed.
    std::string itemPath;
    std::int32_t errorCode;
    // The code's name; empty if the value is not a result code.
    std::string errorName;
    // Keeps the failed command's slot in the tree as long as a copy of the exception exists; null if there is none.
    std::shared_ptr<TemporarySlot> commandSlot;
};
