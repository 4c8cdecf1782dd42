// Finds the photograph that should be taken next.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Compares a fixed set of poses of the target in front of the camera that has the greatest uncertainty. Returns the
// pose that, as the covariance predicts, would reduce this uncertainty most. Empty if no pose reduces it by more than
// 5 %. If more photographs would hardly improve the lens, the text says this.
std::optional<NextPhotograph> findNextPhotograph(const Calibration &calibration);

// True if the greatest uncertainty of every camera is far below the error of a single corner. More photographs then
// hardly improve the lens, but they may still improve the poses of prints.
bool isLensCertain(const Calibration &calibration);

}  // namespace calibration
