// Finds out why a sighting does not fit.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Returns the sightings that are in use in `given` but not in the calibration, each with the reason. The calibration's
// sightings are in the order of `given`. A sighting that is in `known` keeps the reason from there.
std::vector<LeftOut> findLeftOut(const Observations &given, const Calibration &calibration,
                                 const std::vector<LeftOut> &known = {});

}  // namespace calibration
