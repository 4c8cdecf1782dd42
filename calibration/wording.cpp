#include "calibration/wording.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace calibration {

std::string capitalised(std::string text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
        text[0] = char(text[0] - 'a' + 'A');
    }
    return text;
}

std::string namesOf(const Observations &observations, const std::vector<int> &prints) {
    std::string list;
    bool haveNumbers = true;
    for (size_t i = 0; i < prints.size(); i++) {
        const Print &print = observations.prints[size_t(prints[i])];
        haveNumbers = haveNumbers && print.number >= 0;
        list += i == 0 ? "" : i + 1 == prints.size() ? " and " : ", ";
        list += print.number >= 0     ? std::to_string(print.number)
                : !print.name.empty() ? "\"" + print.name + "\""
                                      : "the target";
    }
    return haveNumbers ? (prints.size() > 1 ? "patterns " : "pattern ") + list : list;
}

std::string counted(std::ptrdiff_t count, const std::string &noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string rounded(double value) {
    std::array<char, 32> text{};
    const double size = std::abs(value);
    const int digits = size >= 9.95 ? 0 : size >= 0.995 ? 1 : size >= 0.00995 ? 2 : 3;
    std::snprintf(text.data(), text.size(), "%.*f", digits, value);
    return text.data();
}

std::string placeInPicture(double x, double y) {
    const std::string vertical = y < 0.34 ? "upper" : y > 0.66 ? "lower" : "";
    const std::string horizontal = x < 0.34 ? "left" : x > 0.66 ? "right" : "";
    if (vertical.empty() && horizontal.empty()) {
        return "in the middle";
    }
    if (vertical.empty() || horizontal.empty()) {
        return "at the " + vertical + horizontal + " edge";
    }
    return "in the " + vertical + " " + horizontal + " corner";
}

}  // namespace calibration
