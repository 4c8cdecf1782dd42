// Puts into words how good a calibration is and what would make it better.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Fills Calibration::verdict and adds to Calibration::notices, from everything else.
void giveVerdict(Calibration &calibration, bool isLensGiven);

}  // namespace calibration
