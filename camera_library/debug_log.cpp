#include "camera_library/debug_log.h"

namespace lmlib64 {

LmLibResult DebugLog::write(std::string_view message) {
    if (message.size() >= capacity) {
        return LmLibResultDebugMessageOverflow;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    lines.reserve(lines.size() + message.size() + 1);
    lines.append(message).append("\n");
    if (lines.size() - start > capacity) {
        start = lines.find('\n', lines.size() - capacity - 1) + 1;
    }
    if (start > capacity) {
        lines.erase(0, start);
        start = 0;
    }
    return LmLibResultOperationSucceeded;
}

LmLibResult DebugLog::read(std::string &text) const {
    const std::lock_guard<std::mutex> lock(mutex);
    if (lines.empty()) {
        return LmLibResultNoDebugData;
    }
    text.assign(lines, start);
    return LmLibResultOperationSucceeded;
}

void DebugLog::clear() {
    const std::lock_guard<std::mutex> lock(mutex);
    lines = std::string();
    start = 0;
}

}  // namespace lmlib64
