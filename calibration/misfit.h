// Finds out why a sighting does not fit.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Returns the sightings that are in use in `given` but not in the calibration, each with the reason. The reasons in
// `known`, which has numbers of sightings of `given`, are kept.
std::vector<LeftOut> findLeftOut(const Observations &given, const Calibration &calibration,
                                 const std::vector<LeftOut> &known = {});

}  // namespace calibration
