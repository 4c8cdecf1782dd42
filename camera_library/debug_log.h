// The library's debug log: lines in memory, of which the oldest are dropped when new ones need room. May be used from
// any thread.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include "camera_library/lmlib64.h"

namespace lmlib64 {

class DebugLog {
public:
    // The greatest number of bytes that are kept, including line feeds.
    static constexpr std::size_t capacity = 65536;

    // Adds the message and a line feed. LmLibResultDebugMessageOverflow if they are longer than the capacity.
    LmLibResult write(std::string_view message);

    // Sets text to all lines, oldest first. LmLibResultNoDebugData if there are none.
    LmLibResult read(std::string &text) const;

    void clear();

private:
    mutable std::mutex mutex;
    std::string lines;
    std::size_t start = 0;  // everything before it is dropped; it is removed from time to time
};

}  // namespace lmlib64
