// The photograph to take next.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Of a fixed set of poses of the target, the one that lowers the greatest uncertainty of the worst camera most, as the
// covariance predicts. Empty if no pose lowers it by a useful amount.
std::optional<NextPhotograph> findNextPhotograph(const Calibration &calibration);

}  // namespace calibration
