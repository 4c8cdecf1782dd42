// Formats numbers for files.
#pragma once

#include <string>

namespace calibration {

// Returns the shortest text that is read back as the same number. It always has a decimal point, because some YAML
// readers take "1e-05" for a text. Throws std::runtime_error if the number is not finite, because no file may have such
// a number.
std::string numberText(double number);

// Returns the number rounded to a multiple of 10^-digits. The result is never a negative zero.
double rounded(double number, int digits);

}  // namespace calibration
