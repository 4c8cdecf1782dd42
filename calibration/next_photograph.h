// Finds the photograph that should be taken next.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Chooses the camera that has the greatest uncertainty. Of the prints, chooses the one with the most corners seen by
// this camera. Compares a fixed set of poses of this print in front of this camera. Returns the pose that, as the
// covariance predicts, would reduce the camera's uncertainty most. Empty if no uncertainty is known or if no pose
// reduces it by more than 5 %. If more photographs would hardly improve the lenses, NextPhotograph::text says so.
std::optional<NextPhotograph> findNextPhotograph(const Calibration &calibration);

// True if the greatest uncertainty of every camera is at most about a quarter of the error of a single corner. More
// photographs then hardly improve the lenses, but they may still improve the poses of prints. Cameras whose uncertainty
// is not known do not count; if there are no others, the result is false.
bool isLensCertain(const Calibration &calibration);

}  // namespace calibration
