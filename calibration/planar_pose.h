// Finds the pose of one flat print in front of one camera whose lens is known.
#pragma once

#include <optional>

#include "calibration/observations.h"

namespace calibration {

struct PlanarPose {
    RigidMotion cameraFromPrint;
    // Root mean square of the residuals in x and y of all used corners. Each residual is divided by its standard
    // deviation.
    double rms = 0;
};

// Starts from the homography between the print and the directions to its corners, and improves the pose by least
// squares. If the print is far away, it looks nearly the same when it is tilted the other way. So the pose with the
// other tilt is improved, too, and the one that fits better is returned. Empty if fewer than six corners can be used,
// or if one of them is seen more than 87° away from their mean direction. Also empty if the corners do not determine
// the homography, for example because they lie on one line.
std::optional<PlanarPose> planarPose(const Observations &observations, const Sighting &sighting,
                                     const Eigen::VectorXd &intrinsics, const PrintShape &shape);

}  // namespace calibration
