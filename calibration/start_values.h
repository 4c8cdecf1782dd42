// Computes start values for the joint solve from the corners. The lens of each camera comes first, from this camera's
// photographs alone. Next, the pose of each print relative to the camera is found in each photograph. A photograph
// links its prints, its moment and its camera. By following these links, the poses of all prints, moments and cameras
// are computed from the relative poses.
#pragma once

#include "calibration/observations.h"

namespace calibration {

// Finds the lens of one camera from its own photographs. Several focal lengths are tried on a few photographs, and the
// one that fits best is improved on more photographs. Returns the rms of the residuals in standard deviations. Returns
// nothing and leaves `intrinsics` unchanged if the camera has no usable sighting or no focal length fits.
std::optional<double> startLens(const Observations &observations, int camera, Eigen::VectorXd &intrinsics);

// Returns an estimate with the given lenses and all poses. Estimate::groups says which prints are linked. The poses
// come from the most reliable sightings. A sighting that contradicts them has no effect here, but the joint solve still
// uses it. `known` is empty or has an entry for each sighting: its cameraFromPrint if that is known. Known poses count
// as the most reliable.
Estimate startPoses(const Observations &observations, std::vector<Eigen::VectorXd> intrinsics,
                    const std::vector<std::optional<RigidMotion>> &known = {});

}  // namespace calibration
