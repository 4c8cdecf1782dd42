// Chooses the lens model of each camera and the bend of each print by how well they predict photographs that they were
// not estimated from. The photographs that they were estimated from cannot tell, because a model with more parameters
// always fits these at least as well.
#pragma once

#include "calibration/calibrate.h"
#include "calibration/print_freedom.h"

namespace calibration {

// Start values of a camera's lens, of the model given, otherwise of a pinhole or a fisheye, whichever fits better.
// Returns the model. Leaves the lens empty if the camera has no usable sighting.
LensModel startCamera(const Observations &observations, int camera, std::optional<LensModel> model,
                      Eigen::VectorXd &lens);

}  // namespace calibration
