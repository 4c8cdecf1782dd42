#include "calibration/output/number_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace calibration {

std::string numberText(double number) {
    if (!std::isfinite(number)) {
        throw std::runtime_error(
            "The calibration has a value that is infinite or undefined, so no files were written.");
    }
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number == 0 ? 0 : number);
    std::string text(digits.data(), result.ptr);
    const size_t exponent = text.find('e');
    if (text.find('.') == std::string::npos) {
        text.insert(exponent == std::string::npos ? text.size() : exponent, ".0");
    }
    return text;
}

double rounded(double number, int digits) {
    const double unit = std::pow(10.0, digits);
    return std::round(number * unit) / unit + 0.0;
}

}  // namespace calibration
