#include "calibration/report/page_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace calibration {

namespace {

constexpr const char *replacement = "\xEF\xBF\xBD";
constexpr const char *noNumber = "\xE2\x80\x93";

// Returns the length in bytes of the first UTF-8 character; 0 if the text does not begin with a valid one.
size_t characterLength(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    const size_t length = first < 0x80   ? 1
                          : first < 0xC2 ? 0
                          : first < 0xE0 ? 2
                          : first < 0xF0 ? 3
                          : first < 0xF5 ? 4
                                         : 0;
    if (length == 0 || length > text.size()) {
        return 0;
    }
    for (size_t i = 1; i < length; i++) {
        if ((byte(i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    // Overlong forms, surrogates, values beyond U+10FFFF and the two non-characters that XML forbids are not valid.
    const bool isWrong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
                         (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F) ||
                         (first == 0xEF && byte(1) == 0xBF && byte(2) >= 0xBE);
    return isWrong ? 0 : length;
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const size_t length = characterLength(text);
        const char first = text.front();
        if (length == 0 || first == 0x7F ||
            (static_cast<unsigned char>(first) < 0x20 && first != '\n' && first != '\t')) {
            result += replacement;
        } else if (first == '&') {
            result += "&amp;";
        } else if (first == '<') {
            result += "&lt;";
        } else if (first == '>') {
            result += "&gt;";
        } else if (first == '"') {
            result += "&quot;";
        } else if (first == '\'') {
            result += "&#39;";
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(std::max<size_t>(length, 1));
    }
    return result;
}

std::string number(double value, int decimals) {
    if (!std::isfinite(value)) {
        return noNumber;
    }
    std::array<char, 400> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed,
                                      std::clamp(decimals, 0, 12));
    std::string text(buffer.data(), result.ptr);
    if (text.front() != '-') {
        return text;
    }
    // The sign is a typographic minus. A value that is rounded to zero has no sign.
    const bool isZero = text.find_first_not_of("-0.") == std::string::npos;
    return (isZero ? "" : "\xE2\x88\x92") + text.substr(1);
}

std::string shortest(double value, int decimals) {
    std::string text = number(value, decimals);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        text.erase(text.find_last_not_of('.') + 1);
    }
    return text;
}

std::string rounded(double value, int digits) {
    if (!std::isfinite(value) || value == 0) {
        return number(value, 0);
    }
    return number(value, digits - 1 - int(std::floor(std::log10(std::abs(value)) + 1e-9)));
}

std::string count(std::ptrdiff_t value) {
    std::string text = std::to_string(value);
    for (size_t i = text.size(); i > 3; i -= 3) {
        text.insert(i - 3, ",");
    }
    return text;
}

std::string withSigma(double value, double sigma) {
    if (!std::isfinite(sigma) || sigma <= 0) {
        return rounded(value, 6);
    }
    const int decimals = std::clamp(1 - int(std::floor(std::log10(sigma))), 0, 9);
    return number(value, decimals) + " \xC2\xB1 " + number(sigma, decimals);
}

std::string base64(std::string_view bytes) {
    constexpr const char *digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    result.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t length = std::min<size_t>(3, bytes.size() - i);
        unsigned group = 0;
        for (size_t j = 0; j < 3; j++) {
            group = group << 8 | (j < length ? static_cast<unsigned char>(bytes[i + j]) : 0U);
        }
        for (size_t j = 0; j < 4; j++) {
            result += j <= length ? digits[group >> (18 - 6 * j) & 63] : '=';
        }
    }
    return result;
}

std::string cell(const std::string &html) {
    return "<td>" + html + "</td>";
}

std::string numberCell(const std::string &html) {
    return "<td class=\"n\">" + html + "</td>";
}

std::string headings(std::initializer_list<const char *> texts) {
    std::string result = "<thead><tr>";
    for (const char *text : texts) {
        const bool isNumber = text[0] == '>';
        result += std::string(isNumber ? "<th scope=\"col\" class=\"n\">" : "<th scope=\"col\">") +
                  (text + (isNumber ? 1 : 0)) + "</th>";
    }
    return result + "</tr></thead>\n";
}

}  // namespace calibration
