// Start values for the joint solve, from nothing but the corners: each camera's lens by itself, each print's pose in
// each photograph, then the poses of prints, moments and cameras along the photographs that link them.
#pragma once

#include "calibration/observations.h"

namespace calibration {

// The lens of one camera, by itself: several focal lengths are tried on a few of its photographs, and the one that fits
// best is improved over all of them. Sets nothing if the camera has no usable sighting. Returns the rms of the
// residuals in standard deviations.
std::optional<double> startLens(const Observations &observations, int camera, Eigen::VectorXd &intrinsics);

// All poses, given lenses. Which prints hang together is in Estimate::groups; a sighting that contradicts the others
// does not take part, but stays in use.
Estimate startPoses(const Observations &observations, std::vector<Eigen::VectorXd> intrinsics);

}  // namespace calibration
