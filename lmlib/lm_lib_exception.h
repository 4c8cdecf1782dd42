// The only exception type for failures of the camera library. It holds the item, the result code and the slot of the
// failed command. It does not show the failure; error_report.h does.
//
// It is thrown by value and caught by constant reference. It is intentionally not a std::exception and has no base
// class, so only a handler that names it (or catches everything) catches it. Texts are in the library's narrow
// encoding.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

class TemporarySlot;

class LmLibException {
public:
    // Also writes "LmLibException <name> at <path>" to the library's debug log.
    LmLibException(std::string path, std::int32_t code, std::shared_ptr<TemporarySlot> slot);

    // Read the "ErrorSymbol" and the "ErrorText" of a failed command from "Result" below `itemPath`. Both functions
    // throw LmLibException if these nodes do not exist.
    std::string errorSymbol() const;
    std::string errorText() const;

    // The item accessed, or the slot of a failed command; empty if the library as a whole failed.
    std::string itemPath;
    std::int32_t errorCode;
    // The code's name; empty if the value is not a result code.
    std::string errorName;
    // Keeps the failed command's slot in the tree as long as a copy of the exception exists; null if the exception has
    // no such slot.
    std::shared_ptr<TemporarySlot> commandSlot;
};
