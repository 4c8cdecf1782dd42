// Words for the texts that a user reads.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "calibration/observations.h"

namespace calibration {

// Returns the text with a capital first letter. A text that starts with a quotation mark stays as it is.
std::string capitalised(std::string text);

// Returns a list of these prints. If all of them have numbers, the list is "pattern 3" or "patterns 3 and 7".
// Otherwise, the word "pattern" is left out. A print with a number then appears as this number, another print as its
// name in quotation marks, and a print with neither a number nor a name as "the target".
std::string namesOf(const Observations &observations, const std::vector<int> &prints);

// Returns "1 corner" or "5 corners".
std::string counted(std::ptrdiff_t count, const std::string &noun);

// Returns the number rounded to 0 to 3 decimals. The larger the number, the fewer decimals it gets: "0.004", "0.06",
// "2.1", "350".
std::string rounded(double value);

// Returns the name of one of nine parts of the picture: "in the middle", "in the lower left corner", "at the upper
// edge". x and y are shares of the picture's width and height, from 0 to 1.
std::string placeInPicture(double x, double y);

}  // namespace calibration
