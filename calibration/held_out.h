// Which of two models to take: the one that predicts photographs it has not seen. A model with more parameters always
// fits the photographs it was estimated from at least as well.
#pragma once

#include <optional>
#include <vector>

#include "calibration/joint_solve.h"

namespace calibration {

// How well a model predicts: the mean squared residual in units of good corners' variance, limited for corners that are
// far out, of each sighting whose moment was held out; nothing for sightings that do not take part. The moments are
// split into a few parts; for each part everything is estimated from the others, then only the part's own moments.
std::vector<std::optional<double>> heldOutErrors(const Observations &observations, const Freedom &freedom,
                                                 const Estimate &estimate);

// Whether b predicts clearly better than a: its errors are smaller by more than twice the standard error of the mean
// difference, over the sightings that `counts` says.
bool predictsBetter(const std::vector<std::optional<double>> &a, const std::vector<std::optional<double>> &b,
                    const std::vector<bool> &counts);

}  // namespace calibration
