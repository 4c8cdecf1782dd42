// Finds out why a sighting does not fit.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// The sightings of `given` in use there that the calibration does not use, each with the reason. Prints without a pose
// are not among them: no photograph links them.
std::vector<LeftOut> findLeftOut(const Observations &given, const Calibration &calibration);

}  // namespace calibration
