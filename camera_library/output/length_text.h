// Writes lengths for drawing files: as decimal numbers without exponents, in the same way in every locale.
#pragma once

#include <cstdint>
#include <string>

namespace lmlib64 {

// Rounds a length to whole grains; a grain is 0.00001 of the length's unit, so 0.01 um for millimetres. To get a
// distance in grains, convert the coordinates of its two ends and subtract the results. If the distance itself were
// rounded, two shapes that touch could have a gap between them in the file.
std::int64_t lengthGrains(double length);

// Appends the shortest text of the length, with at most five decimals.
void appendLength(std::string &text, std::int64_t grains);

}  // namespace lmlib64
