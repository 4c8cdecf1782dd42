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

// Returns the pose of each sighting. A pose is empty if the sighting is not in use, fits no pose, or is blurred or
// misread. All poses are empty if the solve fails.
//
// The lenses and the shapes of the prints are estimated again, together with these poses; only the prints' scales stay
// as in the joint estimate. Because every sighting has a pose of its own, a print that was moved between two
// photographs does no harm.
std::vector<std::optional<LonePose>> findLonePoses(const Observations &observations, const Freedom &freedom,
                                                   const Estimate &joint);

}  // namespace calibration
