// Calibrates faster if the observations are similar to those of an earlier result. The solve starts from the earlier
// estimate and from the earlier decisions about bad sightings and corners. These decisions are checked, but bad
// sightings and corners are not searched for from the beginning.
#pragma once

#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

// Returns for each sighting of `given` the index of the sighting in `previous` that has the same camera, print and
// corners; -1 if there is none.
std::vector<int> sameSightings(const Observations &given, const Observations &previous);

// Solves for `given` with the lens models of the previous result. A print that is flat in the previous result stays
// flat. The bend of any other print is a polynomial of the same order as before. Sets result.observations,
// result.estimate and result.freedom. `same` is what sameSightings() returns. Returns false if a solve fails. Also
// returns false in these cases, because a search for outliers from scratch could then find different ones:
// - Fewer than half of the sightings are the same as before, or a camera has none of these sightings.
// - For a sighting that is also in the previous result, the decision whether it is bad changes.
// - It is not clear which sightings are bad.
// If the function returns false, `result` is undefined.
bool solveFromPrevious(const Observations &given, const Calibration &previous, const std::vector<int> &same,
                       const CalibrateOptions &options, Calibration &result);

}  // namespace calibration
