// Prevents bad input from distorting the result: corners with large residuals are dropped, and sightings that do not
// fit are left out, with the reason.
#pragma once

#include "calibration/joint_solve.h"

namespace calibration {

enum class Misfit {
    NoPose,       // the print's pose could not be found from its corners
    Moved,        // fits by itself, but not where the other photographs have the print
    AnotherLens,  // does not fit this lens in any pose, but fits one with another focal length
    Unclear,      // fits nothing: blurred, disturbed or misread
};

// Repeats a robust solve, drops corners whose residual exceeds four standard deviations, and leaves out sightings that
// do not fit, until nothing changes. What was left out is used again if it fits later. Changes isUsed in the
// observations. False if a solve fails.
bool solveWithoutOutliers(Observations &observations, const Freedom &freedom, Estimate &estimate);

// Why a sighting does not fit the estimate.
Misfit misfitOf(const Observations &observations, const Sighting &sighting, const Estimate &estimate);

// The scale of good corners' residuals, 1 if the corners' standard deviations are right. Up to half of the corners may
// be bad.
double residualScale(const Observations &observations, const Estimate &estimate);

}  // namespace calibration
