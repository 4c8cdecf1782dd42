// Formats texts and numbers for the report. Numbers have a decimal point in every locale. A number that is not finite
// is shown as a dash.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace calibration {

// Escapes a text, so that it can be the content of an HTML element or of an attribute in quotation marks. Bytes that
// are not UTF-8, characters that XML forbids, the carriage return and U+007F become U+FFFD.
std::string escaped(std::string_view text);

// Returns the value with this many decimal places, but at least 0 and at most 12; "–" if it is not finite.
std::string number(double value, int decimals);
// Returns the value with at most this many decimal places, without zeros at the end.
std::string shortest(double value, int decimals);
// Returns the value with this many significant digits, but with 0 to 12 decimal places and never in exponential form.
std::string rounded(double value, int digits);
// Returns the value with commas between thousands: "12,345".
std::string count(std::ptrdiff_t value);

// Returns the value and its standard deviation: "1234.56 ± 0.12". Both have the same number of decimal places, 0 to 9.
// Within this range, the number of places is chosen so that the standard deviation has two significant digits. Only the
// value is shown if the standard deviation is 0 or not finite.
std::string withSigma(double value, double sigma);

std::string base64(std::string_view bytes);

// Make a cell of a table from HTML. The first function is for text, the second one for a number.
std::string cell(const std::string &html);
std::string numberCell(const std::string &html);
// Returns a table's heading row from HTML texts. If a text begins with '>', the column below it has numbers. The '>'
// is not shown.
std::string headings(std::initializer_list<const char *> texts);

}  // namespace calibration
