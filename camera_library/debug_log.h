// The library's debug log keeps lines in memory and drops the oldest when new ones need room. It may be used from any
// thread.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include "camera_library/lmlib64.h"

namespace lmlib64 {

class DebugLog {
public:
    // The greatest number of bytes that read() returns, including line feeds.
    static constexpr std::size_t capacity = 65536;

    // Adds the message and a line feed. If the two together have more than `capacity` bytes, adds nothing and returns
    // LmLibResultDebugMessageOverflow.
    LmLibResult write(std::string_view message);

    // Sets the text to all lines, oldest first. Returns LmLibResultNoDebugData if there are none.
    LmLibResult read(std::string &text) const;

    void clear();

private:
    mutable std::mutex mutex;
    std::string lines;
    // The oldest line that read() returns begins at this index of `lines`. The dropped lines before it are still there,
    // because write() erases them only from time to time.
    std::size_t start = 0;
};

}  // namespace lmlib64
