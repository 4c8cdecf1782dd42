// Solves for observations that are similar to those of an earlier result. It starts from the earlier estimate and from
// the earlier decisions about bad sightings and corners. It checks these decisions, but does not search for them again.
#pragma once

#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

// Returns for each sighting of `given` the index of the sighting in `previous` that has the same camera, print and
// corners; -1 if there is none.
std::vector<int> sameSightings(const Observations &given, const Observations &previous);

// Solves for `given` with the lens models and bends of the previous result, and sets the observations, the estimate and
// the freedom of `result`. `same` is what sameSightings() returns. Returns false if a solve fails. Also returns false
// if a search for outliers from the beginning could have another outcome: if fewer than half of the sightings are the
// same as before, if a camera has no such sighting, if a decision about an earlier sighting changes, or if it is not
// clear which place of a print counts. Then `result` is undefined.
bool solveFromPrevious(const Observations &given, const Calibration &previous, const std::vector<int> &same,
                       const CalibrateOptions &options, Calibration &result);

}  // namespace calibration
