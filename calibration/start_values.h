// Start values for the joint solve, from nothing but the corners: first the lens of each camera by itself, then the
// pose of each print in each photograph, and from these the poses of all prints, moments and cameras, which are linked
// by the photographs that they have in common.
#pragma once

#include "calibration/observations.h"

namespace calibration {

// The lens of one camera, by itself: several focal lengths are tried on a few of its photographs, and the one that fits
// best is improved over more of them. Sets nothing if the camera has no usable sighting. Returns the rms of the
// residuals in standard deviations.
std::optional<double> startLens(const Observations &observations, int camera, Eigen::VectorXd &intrinsics);

// All poses, given the lenses. Estimate::groups says which prints are linked. The poses come from the most reliable
// sightings. A sighting that contradicts them has no effect here, but the joint solve still uses it.
Estimate startPoses(const Observations &observations, std::vector<Eigen::VectorXd> intrinsics);

}  // namespace calibration
