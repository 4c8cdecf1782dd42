#include "camera_library/tree/path.h"

#include <algorithm>
#include <limits>

namespace lmlib64 {

namespace {

constexpr char separator = '/';
constexpr char indexMark = '\\';

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isIndex(std::string_view digits) {
    const bool padded = digits.size() > 1 && digits.front() == '0';
    return !digits.empty() && !padded && std::all_of(digits.begin(), digits.end(), isDigit);
}

// Returns the index that the digits state. A number that is too large becomes the greatest std::size_t; no array is
// that long.
std::size_t indexOf(std::string_view digits) {
    constexpr std::size_t greatest = std::numeric_limits<std::size_t>::max();
    std::size_t index = 0;
    for (const char character : digits) {
        const auto digit = static_cast<std::size_t>(character - '0');
        if (index > (greatest - digit) / 10) {
            return greatest;
        }
        index = index * 10 + digit;
    }
    return index;
}

}  // namespace

bool Path::isName(std::string_view text) {
    return !text.empty() && text.find(separator) == std::string_view::npos &&
           text.find(indexMark) == std::string_view::npos;
}

LmLibResult Path::parse(std::string_view text, Path &path) {
    std::size_t partCount = 0;
    std::string_view rest = text;
    while (!rest.empty()) {
        if (rest.front() != separator) {
            return LmLibResultItemPathInvalid;
        }
        const std::size_t length = std::min(rest.find(separator, 1), rest.size());
        const std::string_view part = rest.substr(1, length - 1);
        const bool valid = !part.empty() && part.front() == indexMark ? isIndex(part.substr(1)) : isName(part);
        if (!valid) {
            return LmLibResultItemPathInvalid;
        }
        ++partCount;
        rest.remove_prefix(length);
    }
    if (partCount > LMLIB_MAXIMUM_DEPTH) {
        return LmLibResultNestingLimitReached;
    }
    path.text = text;
    path.partCount = partCount;
    return LmLibResultOperationSucceeded;
}

void Path::Iterator::decode() {
    if (rest.empty()) {
        return;
    }
    length = std::min(rest.find(separator, 1), rest.size());
    part.name = rest.substr(1, length - 1);
    part.isIndex = part.name.front() == indexMark;
    if (part.isIndex) {
        part.name.remove_prefix(1);
        part.index = indexOf(part.name);
    }
}

}  // namespace lmlib64
