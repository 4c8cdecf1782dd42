// The pose of one flat print in front of one camera whose lens is known.
#pragma once

#include <optional>

#include "calibration/observations.h"

namespace calibration {

struct PlanarPose {
    RigidMotion cameraFromPrint;
    double rms = 0;  // of the corners' distances from where the pose puts them, in standard deviations per axis
};

// From the homography between the print and the directions to its corners, then by least squares; of the two poses that
// look alike from far away, the better one. Nothing for less than six corners, or if they lie on one line.
std::optional<PlanarPose> planarPose(const Observations &observations, const Sighting &sighting,
                                     const Eigen::VectorXd &intrinsics, const PrintShape &shape);

}  // namespace calibration
