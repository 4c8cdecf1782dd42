// Finds out why a sighting does not fit.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Returns the sightings that are in use in `given` but not in the calibration, each with the reason.
std::vector<LeftOut> findLeftOut(const Observations &given, const Calibration &calibration);

}  // namespace calibration
