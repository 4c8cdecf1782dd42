// Computes how far each camera and each print of a solved calibration can be trusted.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Replaces the elements of Calibration::cameras and Calibration::prints. Sets all members of the new elements except
// `trials` and `isMeasured`, which the caller sets afterwards. Needs the calibration's observations, estimate, freedom
// and covariance.
void judgeTrust(Calibration &calibration);

}  // namespace calibration
