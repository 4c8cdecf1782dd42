// Numbers as text.
#pragma once

#include <string>

namespace calibration {

// The shortest text that is read back as the same number, always with a decimal point, because some YAML readers take
// "1e-05" for a text. Throws std::runtime_error if the number is not finite: no file of ours may have one.
std::string numberText(double number);

// The number rounded to a multiple of 10^-digits, never a negative zero.
double rounded(double number, int digits);

}  // namespace calibration
