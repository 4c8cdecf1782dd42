// Solves for all unknowns (lenses, rig, moments, prints and their shapes) in a single least-squares problem. It needs
// start values, and it does not look for outliers. It uses Ceres Solver. The result does not depend on the number of
// processors.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "calibration/observations.h"

namespace calibration {

// How exact printers are: the default standard deviation of the prior for a print's scale, ratio and shear.
constexpr double printPrior = 0.005;

// The means and standard deviations of the prior for a print's scale, ratio and shear.
struct ShapePrior {
    std::array<double, PrintShape::bend> mean{};
    std::array<double, PrintShape::bend> sigma{printPrior, printPrior, printPrior};
};

// Says what the solve may vary. What may not vary stays unchanged. The poses of the moments always vary.
struct Freedom {
    bool intrinsics = true;
    bool coefficients = true;  // of the distortion; ignored if intrinsics is false
    bool rig = true;           // the poses of the cameras in their rig
    bool prints = true;        // the poses of the prints
    // For each print, the indices of the PrintShape numbers that may vary. Empty if no print's shape may vary.
    std::vector<std::vector<int>> shapes;
    // The prior of each print, for the numbers that may vary. Empty if all prints have the default.
    std::vector<ShapePrior> priors;

    ShapePrior priorOf(int print) const { return priors.empty() ? ShapePrior() : priors[size_t(print)]; }
};

struct SolveOptions {
    Freedom freedom;
    double robustScale = 0;  // as in SightingResiduals
    int iterations = 100;
    // The solve ends if the relative change of the sum of squares or of the unknowns in a step is below this value.
    double tolerance = 1e-12;
    bool isNear = false;  // the estimate is near the solution, so the solve takes full steps from the first one on
};

// Improves the estimate, using the sightings that takesPart() selects. Returns half the sum of the squared residuals,
// including those of the priors. If no sighting takes part or the solve fails, returns nothing and leaves the estimate
// unchanged. Throws Cancelled after an iteration if the calibration was cancelled in the meantime (interruption.h).
std::optional<double> solveJointly(const Observations &observations, const SolveOptions &options, Estimate &estimate);

// True if the camera, the moment and the print of a sighting have a pose.
bool hasPose(const Observations &observations, const Sighting &sighting, const Estimate &estimate);

// True if the sighting is in use, and its camera, moment and print have a pose.
bool takesPart(const Observations &observations, const Sighting &sighting, const Estimate &estimate);

}  // namespace calibration
