#include "lmlib/error_codes.h"

#include <array>
#include <cstddef>

#include "camera_library/lmlib64.h"

namespace {

constexpr std::size_t codeCount = LmLibResultInvalidParameters + 1;

// The index of a name is its code.
constexpr std::array<const char *, codeCount> errorNames = {
    "OperationSucceeded",
    "ItemProtected",
    "CouldNotInterpretJsonText",
    "ItemInexistent",
    "ItemPathInvalid",
    "NoDebugData",
    "CouldNotOpenPort",
    "InternalError",
    "Timeout",
    "NotConnected",
    "MethodInvalid",
    "BadRequest",
    "ItemMaximumUniqueCountReached",
    "ItemTypeNotCompatible",
    "InvalidBufferSize",
    "BufferTooSmall",
    "BufferNotDivisibleByElementSize",
    "ExecutionFailed",
    "DebugMessageOverflow",
    "CommandRunning",
    "CouldNotLoadLibrary",
    "CouldNotLoadFunction",
    "ConnectionNotCompatible",
    "InitializationNotAllowed",
    "NestingLimitReached",
    "NoOpenProfileBlock",
    "LibraryAlreadyLoaded",
    "OperationCanceled",
    "InvalidParameters",
};

}  // namespace

const char *errorName(std::int32_t code) {
    // The code is compared as unsigned, so that a negative code is out of range as well.
    const auto index = static_cast<std::uint32_t>(code);
    return index < codeCount ? errorNames[index] : "";
}
