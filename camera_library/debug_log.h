// The library's debug log: lines in memory, the oldest dropped as new ones come. May be used from any thread.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include "camera_library/lmlib64.h"

namespace lmlib64 {

class DebugLog {
public:
    // The greatest number of bytes kept, line feeds included.
    static constexpr std::size_t capacity = 65536;

    // Adds the message and a line feed; LmLibResultDebugMessageOverflow where they are more than fits.
    LmLibResult write(std::string_view message);

    // Sets text to all lines, oldest first; LmLibResultNoDebugData where there are none.
    LmLibResult read(std::string &text) const;

    void clear();

private:
    mutable std::mutex mutex;
    std::string lines;
    std::size_t start = 0;  // what stands before it is dropped, and removed once in a while
};

}  // namespace lmlib64
