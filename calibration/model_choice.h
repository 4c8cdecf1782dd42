// Chooses the lens model of each camera and the bend of each print by how well they predict photographs that they were
// not estimated from. The photographs that they were estimated from cannot tell, because a model with more parameters
// always fits these at least as well. Among models that predict equally well, the one with fewer parameters is taken.
#pragma once

#include "calibration/calibrate.h"
#include "calibration/print_freedom.h"

namespace calibration {

struct LensStart {
    LensModel lens = LensModel::Pinhole5;
    Eigen::VectorXd intrinsics;
    double rms = 0;  // of the residuals, in standard deviations
};

// Start values of a camera's lens, the best first: of the model given, otherwise of a pinhole and of a fisheye. Empty
// if the camera has no usable sighting.
std::vector<LensStart> startLenses(const Observations &observations, int camera, std::optional<LensModel> model);

struct LensChoice {
    LensStart chosen;
    std::vector<ModelTrial> trials;
};

// Compares all models on the sightings of one camera, with the bends given. Keeps the first start if there are too few
// photographs to compare models.
LensChoice chooseLens(const Observations &observations, int camera, const std::vector<LensStart> &starts,
                      const std::vector<Bend> &bends, const std::vector<MeasuredPrint> &measured);

// Compares flat prints with bent ones on all sightings, starting from an estimate with the lenses given.
std::vector<Bend> chooseBends(const Observations &observations, const Estimate &estimate,
                              const std::vector<MeasuredPrint> &measured);

}  // namespace calibration
