// Measures how well a model predicts photographs that were not used to estimate it.
#pragma once

#include <optional>
#include <vector>

#include "calibration/joint_solve.h"

namespace calibration {

// Returns the mean squared residual of each sighting, in units of the corners' variance; empty if the sighting does not
// take part. Each squared residual is limited before the mean is taken, so that a single bad corner does not decide a
// comparison. Models can be compared only if they were tried on the same corners with the same standard deviations.
//
// The moments at which photographs were taken are split into three parts. For each part, all unknowns are estimated
// from the other two parts, with `estimate` as the start. Then only the poses of this part's moments are estimated,
// from this part's own sightings. The residuals of these sightings are the result. All values are empty if too few
// moments take part or a solve fails.
std::vector<std::optional<double>> heldOutErrors(const Observations &observations, const Freedom &freedom,
                                                 const Estimate &estimate);

// Chooses a model by the held-out errors of all models. The models in `errors` are in order of preference. Returns the
// index of the first model whose errors are not clearly larger than those of the best one. `counts` tells for each
// sighting whether its errors are compared. A sighting that no model predicts well is ignored even if `counts` is true
// for it.
size_t preferredModel(const std::vector<std::vector<std::optional<double>>> &errors, std::vector<bool> counts);

// Returns the mean of the errors that count; empty if there are none.
std::optional<double> meanError(const std::vector<std::optional<double>> &errors, const std::vector<bool> &counts);

}  // namespace calibration
