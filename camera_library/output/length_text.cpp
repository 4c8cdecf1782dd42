#include "camera_library/output/length_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace lmlib64 {

namespace {

constexpr int decimals = 5;
constexpr std::int64_t grainsPerUnit = 100000;

}  // namespace

std::int64_t lengthGrains(double length) {
    return std::llround(length * grainsPerUnit);
}

void appendLength(std::string &text, std::int64_t grains) {
    if (grains < 0) {
        text += '-';
    }
    const std::int64_t length = std::abs(grains);
    std::array<char, 24> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), length / grainsPerUnit);
    text.append(digits.data(), end);
    if (std::int64_t rest = length % grainsPerUnit; rest != 0) {
        std::array<char, decimals + 1> fraction{'.'};
        for (std::size_t place = decimals; place > 0; --place, rest /= 10) {
            fraction.at(place) = static_cast<char>('0' + rest % 10);
        }
        text.append(fraction.data(), fraction.size());
        text.resize(text.find_last_not_of('0') + 1);
    }
}

}  // namespace lmlib64
