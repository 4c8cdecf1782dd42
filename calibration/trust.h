// How far a solved calibration can be trusted: per camera and per print.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Fills Calibration::cameras except for `trials`, and Calibration::prints except for isMeasured, from its observations,
// estimate and covariance.
void judgeTrust(Calibration &calibration);

}  // namespace calibration
