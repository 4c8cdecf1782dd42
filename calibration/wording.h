// Words for the texts that a user reads.
#pragma once

#include <string>
#include <vector>

#include "calibration/observations.h"

namespace calibration {

// With a capital letter at the start of a sentence, unless it starts with a quotation mark.
std::string capitalised(std::string text);

// "pattern 3", "patterns 3 and 7", or the prints' names in quotation marks if they have no numbers.
std::string namesOf(const Observations &observations, const std::vector<int> &prints);

// A number with a few digits: "0.06", "2.1", "350".
std::string rounded(double value);

// One of nine parts of the picture: "in the middle", "in the lower left corner", "at the upper edge". x and y are
// shares of the picture, 0 to 1.
std::string placeInPicture(double x, double y);

}  // namespace calibration
