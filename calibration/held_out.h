// Chooses between two models by how well they predict photographs that they were not estimated from. The photographs
// that they were estimated from cannot tell, because a model with more parameters always fits these at least as well.
#pragma once

#include <optional>
#include <vector>

#include "calibration/joint_solve.h"

namespace calibration {

// How well a model predicts each sighting when its moment is held out: the mean squared residual in units of good
// corners' variance, with a limit for corners that are far out. Empty for sightings that do not take part. The moments
// are split into a few parts. For each part, everything is estimated from the other parts, and then only the poses of
// the part's own moments from its own sightings.
std::vector<std::optional<double>> heldOutErrors(const Observations &observations, const Freedom &freedom,
                                                 const Estimate &estimate);

// True if b predicts clearly better than a: over the sightings for which `counts` is true, its errors are smaller on
// average, by more than twice the standard error of the mean difference.
bool predictsBetter(const std::vector<std::optional<double>> &a, const std::vector<std::optional<double>> &b,
                    const std::vector<bool> &counts);

}  // namespace calibration
