// The one exception type for failures of the camera library: which item, which code, and the failed command's
// slot. A plain value without a base class: it is thrown by value and caught by constant reference, and nothing
// but a handler that names it catches it. It decides nothing about how a failure is shown.
//
// Texts are in the library's narrow encoding.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

class TemporarySlot;

// Deliberately not a std::exception.
class LmLibException {
public:
    // Also writes "LmLibException <name> at <path>" to the library's debug log.
    LmLibException(std::string path, std::int32_t code, std::shared_ptr<TemporarySlot> slot);

    // "ErrorSymbol" and "ErrorText" of the result below itemPath; what a failed command left there.
    // Throw LmLibException where there is none.
    std::string errorSymbol() const;
    std::string errorText() const;

    // The item accessed; for a failed command its slot, and empty for a failure of the library as a whole.
    std::string itemPath;
    std::int32_t errorCode;
    // The code's name; empty for a value that is no code.
    std::string errorName;
    // Keeps the failed command's slot in the tree as long as any copy of the exception lives; else empty.
    std::shared_ptr<TemporarySlot> commandSlot;
};
