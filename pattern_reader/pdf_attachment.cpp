#include "pattern_reader/pdf_attachment.h"

#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace pattern_reader {

namespace {

// The greatest size of a JSON text that is accepted, in bytes. A pattern with thousands of points takes less than a
// megabyte.
constexpr std::size_t greatestSize = 100'000'000;

// Returns the integer that follows a key. Spaces may lie between them. Returns 0 if no integer follows the key.
std::size_t numberAfter(std::string_view dictionary, std::string_view key) {
    const std::size_t place = dictionary.find(key);
    std::size_t number = 0;
    if (place != std::string_view::npos) {
        const std::string_view text = dictionary.substr(place + key.size());
        std::from_chars(text.data() + std::min(text.find_first_not_of(' '), text.size()), text.data() + text.size(),
                        number);
    }
    return number;
}

}  // namespace

std::string attachedPattern(std::string_view pdf) {
    const std::runtime_error none(R"(it has no attachment "pattern.json" from the camera library)");
    const std::size_t type = pdf.find("/Type /EmbeddedFile ");
    const std::size_t start = type == std::string_view::npos ? type : pdf.find("stream\n", type);
    if (start == std::string_view::npos) {
        throw none;
    }
    const std::string_view dictionary = pdf.substr(type, start - type);
    const std::string_view data = pdf.substr(start + 7);
    const std::size_t length = numberAfter(dictionary, "/Length");
    const std::size_t size = numberAfter(dictionary, "/Size");
    if (length == 0 || length > data.size() || size == 0 || size > greatestSize) {
        throw none;
    }
    std::string text(size, '\0');
    auto written = static_cast<uLongf>(size);
    const int result = uncompress(reinterpret_cast<Bytef *>(text.data()), &written,
                                  reinterpret_cast<const Bytef *>(data.data()), static_cast<uLong>(length));
    if (result != Z_OK || written != size) {
        throw std::runtime_error("its attachment is damaged");
    }
    return text;
}

}  // namespace pattern_reader
