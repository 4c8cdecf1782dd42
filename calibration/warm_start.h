// Starts from the result of similar observations. What was known stays known and what was bad stays bad; both are
// checked once, instead of being found again.
#pragma once

#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

// For each sighting of `given`, the one of the previous observations by the same camera with the same corners; -1 if
// there is none.
std::vector<int> sameSightings(const Observations &given, const Observations &previous);

// Solves for what is given, with the lenses and bends of the previous result, and sets the observations, the estimate
// and the freedom of the result. False if the outcome could differ from that of a search for outliers from the
// beginning: little is the same, a sighting changed sides, or a print was seen elsewhere too often to be sure which of
// its places counts. Then the result is undefined.
bool solveFromPrevious(const Observations &given, const Calibration &previous, const std::vector<int> &same,
                       const CalibrateOptions &options, Calibration &result);

}  // namespace calibration
