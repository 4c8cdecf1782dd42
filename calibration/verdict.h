// Puts into words how good a calibration is and what would make it better.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Fills Calibration::verdict and adds to Calibration::notices, from everything else.
void giveVerdict(Calibration &calibration, bool isLensGiven);

// "pattern 3", "patterns 3 and 7", or the prints' names in quotation marks if they have no numbers.
std::string namesOf(const Observations &observations, const std::vector<int> &prints);

// A number with a few digits: "0.06", "2.1", "350".
std::string rounded(double value);

// One of nine parts of the picture: "in the middle", "in the lower left corner", "at the upper edge". x and y are
// shares of the picture, 0 to 1.
std::string placeInPicture(double x, double y);

}  // namespace calibration
