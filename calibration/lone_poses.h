// Finds the pose of each print in each photograph from this photograph alone.
#pragma once

#include <optional>
#include <vector>

#include "calibration/joint_solve.h"
#include "calibration/relative_places.h"

namespace calibration {

struct LonePose {
    RigidMotion cameraFromPrint;
    Matrix6 covariance;  // of a small rotation about the camera's axes and of the translation, in this order
};

// Returns the pose of each sighting; empty if the sighting is not in use, fits no pose, or is blurred or misread. The
// lenses and shapes are estimated again, together with these poses. Because every sighting has a pose of its own, the
// result does not depend on where prints are relative to each other. The scale of each print stays as in the joint
// estimate.
std::vector<std::optional<LonePose>> findLonePoses(const Observations &observations, const Freedom &freedom,
                                                   const Estimate &joint);

}  // namespace calibration
