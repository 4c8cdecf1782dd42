// Writes numbers for people to read, in the same way in every locale.
#pragma once

#include <string>

namespace lmlib64 {

// Returns the shortest text that reads back as the same number: 12.5, 0.1, 100.
std::string numberText(double number);

// Returns a length rounded to whole nanometres. No printer is that exact. Rounding removes digits that come only from
// floating-point errors, so that texts and files show 4.3 and not 4.300000000000001. The result is never a negative
// zero.
double wholeNanometres(double mm);

}  // namespace lmlib64
