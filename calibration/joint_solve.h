// The one least-squares solve over everything that is unknown at once: lenses, rig, moments, prints and their shapes.
// It needs start values and does not judge its input; Ceres Solver does the work. The result does not depend on the
// number of processors.
#pragma once

#include <vector>

#include "calibration/observations.h"

namespace calibration {

// What may vary; the rest stays as the estimate has it.
struct Freedom {
    bool intrinsics = true;
    bool coefficients = true;  // of the distortion; only with intrinsics
    bool rig = true;
    bool prints = true;
    // For each print the numbers of PrintShape that may vary; empty: none of any print.
    std::vector<std::vector<int>> shapes;
};

struct SolveOptions {
    Freedom freedom;
    double robustScale = 0;  // as in SightingResiduals
    int iterations = 100;
};

// Standard deviation of the prior on a print's scale, ratio and shear: printers are this exact.
constexpr double printPrior = 0.005;

// Improves the estimate by the sightings in use whose moment and print have a pose. Returns half the sum of squared
// residuals, priors included; nothing if the solve failed, and then the estimate is as it was.
std::optional<double> solveJointly(const Observations &observations, const SolveOptions &options, Estimate &estimate);

// Whether a sighting takes part.
bool takesPart(const Observations &observations, const Sighting &sighting, const Estimate &estimate);

}  // namespace calibration
