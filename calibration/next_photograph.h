// Finds the photograph that should be taken next.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Compares a fixed set of poses of the target. Returns the pose that would lower the greatest uncertainty of the worst
// camera most, as the covariance predicts. Empty if no pose lowers it by a useful amount.
std::optional<NextPhotograph> findNextPhotograph(const Calibration &calibration);

}  // namespace calibration
