// Finds out why a sighting does not fit.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Returns the sightings that are in use in `given` but not in the calibration, each with the reason. The reasons in
// `known` are kept; the sightings have the same numbers there as in `given`.
std::vector<LeftOut> findLeftOut(const Observations &given, const Calibration &calibration,
                                 const std::vector<LeftOut> &known = {});

}  // namespace calibration
