// How well a model predicts photographs that it was not estimated from.
#pragma once

#include <optional>
#include <vector>

#include "calibration/joint_solve.h"

namespace calibration {

// For each sighting that takes part, the mean squared residual in units of the corners' variance, each with a limit.
// Models can be compared only if they were tried on the same corners with the same standard deviations. The moments are
// split into three parts. For each part, everything is estimated from the others, starting from the estimate, and then
// only the poses of the part's own moments from its own sightings. Empty if too few moments take part or a solve fails.
std::vector<std::optional<double>> heldOutErrors(const Observations &observations, const Freedom &freedom,
                                                 const Estimate &estimate);

// Which of several models to take, given for each its held-out errors, in order of preference: the first one whose
// errors are not clearly larger than those of the best one. Only errors for which `counts` is true are compared.
// Sightings that no model predicts are ignored.
size_t preferredModel(const std::vector<std::vector<std::optional<double>>> &errors, std::vector<bool> counts);

// The mean of the errors that count; empty if there are none.
std::optional<double> meanError(const std::vector<std::optional<double>> &errors, const std::vector<bool> &counts);

}  // namespace calibration
