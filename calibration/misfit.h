// Finds out why a sighting does not fit.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Returns the sightings that are in use in `given` but that the calibration left out, each with the reason. `given` and
// the calibration's observations must have the same sightings in the same order. A sighting that is in `known` keeps
// the reason from there.
std::vector<LeftOut> findLeftOut(const Observations &given, const Calibration &calibration,
                                 const std::vector<LeftOut> &known = {});

}  // namespace calibration
