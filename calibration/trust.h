// Computes how far each camera and each print of a solved calibration can be trusted.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Makes Calibration::cameras and Calibration::prints anew, with all members except `trials` and `isMeasured`, which the
// caller fills afterwards. Needs the calibration's observations, estimate, freedom and covariance.
void judgeTrust(Calibration &calibration);

}  // namespace calibration
