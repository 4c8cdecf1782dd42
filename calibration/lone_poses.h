// The pose of each print in each photograph, judged by nothing but what this photograph shows of it.
#pragma once

#include <optional>
#include <vector>

#include "calibration/joint_solve.h"
#include "calibration/relative_places.h"

namespace calibration {

struct LonePose {
    RigidMotion cameraFromPrint;
    Matrix6 covariance;  // of a small rotation about the camera's axes, then of the translation
};

// Of each sighting; empty if it is not in use, fits in no pose, or is blurred or misread. Lenses and shapes are
// improved too, with every sighting in a pose of its own, so nothing rests on where prints are relative to each other.
// Only the scale of each print stays as the joint estimate has it.
std::vector<std::optional<LonePose>> findLonePoses(const Observations &observations, const Freedom &freedom,
                                                   const Estimate &joint);

}  // namespace calibration
