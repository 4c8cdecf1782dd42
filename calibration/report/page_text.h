// Texts and numbers as the report shows them. Numbers have a decimal point in every locale, and none is ever "nan".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace calibration {

// Safe within HTML text and quoted attributes. Bytes that are not UTF-8, and characters that XML forbids, become
// U+FFFD.
std::string escaped(std::string_view text);

// "–" if the value is not finite.
std::string number(double value, int decimals);
// Without zeros at the end.
std::string shortest(double value, int decimals);
// With this many significant digits, but never in exponential form.
std::string rounded(double value, int digits);
// "12,345"
std::string count(std::ptrdiff_t value);

// The value with as many decimals as two digits of its standard deviation need: "1234.56 ± 0.12". Only the value if
// the deviation is 0 or not finite.
std::string withSigma(double value, double sigma);

std::string base64(std::string_view bytes);

// One cell of a table.
std::string cell(const std::string &html);
std::string numberCell(const std::string &html);
// The first row of a table, from HTML. A '>' in front of a text puts it above a column of numbers.
std::string headings(std::initializer_list<const char *> texts);

}  // namespace calibration
