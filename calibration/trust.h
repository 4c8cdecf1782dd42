// Computes how far each camera and each print of a solved calibration can be trusted.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Fills Calibration::cameras except for `trials`, and Calibration::prints except for isMeasured. Needs the
// calibration's observations, estimate, freedom and covariance.
void judgeTrust(Calibration &calibration);

}  // namespace calibration
