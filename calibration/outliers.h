// Prevents bad input from distorting the result: corners with large residuals are dropped, and sightings that do not
// fit are left out.
#pragma once

#include "calibration/joint_solve.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

// Repeats a robust solve, drops corners whose residual exceeds four standard deviations, and leaves out sightings that
// do not fit, until nothing changes. What was left out is used again if it fits later. Changes isUsed in the
// observations, but never uses what `given` does not use. Also scales the corners' standard deviations, for each camera
// by one factor, so that they agree with the residuals. False if a solve fails.
bool solveWithoutOutliers(const Observations &given, Observations &observations, const Freedom &freedom,
                          Estimate &estimate);

// Solves so that bad corners have little effect, without deciding which ones are bad. Scales the corners' standard
// deviations as above, and returns the factor of each camera. Empty if a solve fails.
std::optional<std::vector<double>> solveRobustly(Observations &observations, const Freedom &freedom,
                                                 Estimate &estimate);

// Multiplies the corners' standard deviations by a factor for each camera.
void scaleDeviations(Observations &observations, const std::vector<double> &factors);

// The lengths of the residuals of all corners of a sighting, used or not, in standard deviations along one axis. Empty
// if a corner cannot be projected.
std::vector<double> residualLengths(const Observations &observations, const Sighting &sighting,
                                    const BlockPointers &blocks);

// The standard deviation that lengths of good residuals show. Up to half of them may be bad.
double scaleOfLengths(std::vector<double> lengths);

// For each camera, the standard deviation of good corners' residuals, divided by the corners' own standard deviations.
// 1 for a camera without sightings.
std::vector<double> residualScales(const Observations &observations, const Estimate &estimate);

// A corner with a longer residual is bad; in standard deviations along one axis. One good corner in 3,000 is longer.
constexpr double greatestLength = 4;

}  // namespace calibration
