#include "camera_library/pattern/number_text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace lmlib64 {

std::string numberText(double number) {
    std::array<char, 32> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), end};
}

double wholeNanometres(double mm) {
    return std::round(mm * 1e6) / 1e6 + 0.0;  // adding 0 makes a negative zero positive
}

}  // namespace lmlib64
