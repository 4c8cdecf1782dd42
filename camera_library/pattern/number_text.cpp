#include "camera_library/pattern/number_text.h"

#include <array>
#include <charconv>

namespace lmlib64 {

std::string numberText(double number) {
    std::array<char, 32> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), end};
}

}  // namespace lmlib64
