// Formats numbers for files.
#pragma once

#include <string>

namespace calibration {

// Returns the shortest text that is read back as the same number. If this text has no decimal point, ".0" is inserted
// (before the exponent, if there is one), because some YAML readers read "1e-05" as a string and not as a number.
// Throws std::runtime_error if the number is not finite, because no file may have such a number.
std::string numberText(double number);

// Returns the number rounded to a multiple of 10^-digits. The result is never a negative zero.
double rounded(double number, int digits);

}  // namespace calibration
