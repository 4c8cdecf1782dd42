// Chooses the lens model of each camera and the bend of each print. A model is judged by how well it predicts
// photographs that were not used to estimate it. The photographs that were used say nothing, because a model with more
// parameters always fits these at least as well. Of the models that predict about equally well, the one with the fewest
// parameters is taken.
#pragma once

#include "calibration/calibrate.h"
#include "calibration/print_freedom.h"

namespace calibration {

struct LensStart {
    LensModel lens = LensModel::Pinhole5;
    Eigen::VectorXd intrinsics;
    double rms = 0;  // of the residuals, in standard deviations
};

// Returns start values of a camera's lens, the best first: one for `model` if that is given, otherwise one for a
// pinhole and one for a fisheye. Start values that cannot be found are left out, so the result is empty if, for
// example, the camera has no usable sighting.
std::vector<LensStart> startLenses(const Observations &observations, int camera, std::optional<LensModel> model);

struct LensChoice {
    LensStart chosen;
    std::vector<ModelTrial> trials;
};

// Compares lens models on the sightings of one camera, with the given bends of the prints. The models are those for
// which `starts` has a lens of the same kind (pinhole or fisheye). Returns the first start if there are too few
// photographs to compare models.
LensChoice chooseLens(const Observations &observations, int camera, const std::vector<LensStart> &starts,
                      const std::vector<Bend> &bends, const std::vector<MeasuredPrint> &measured);

// Returns the bend of each print. Compares flat prints with bent ones on the sightings of all cameras. After that,
// lowers the order of a bend as long as its terms of the highest order differ from 0 by no more than their uncertainty
// explains. Starts from the estimate and keeps its lens models.
std::vector<Bend> chooseBends(const Observations &observations, const Estimate &estimate,
                              const std::vector<MeasuredPrint> &measured);

}  // namespace calibration
