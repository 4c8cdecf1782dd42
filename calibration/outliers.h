// Keeps bad input from distorting the result: drops corners with large residuals, and leaves out sightings that do not
// fit.
#pragma once

#include "calibration/joint_solve.h"
#include "calibration/sighting_residuals.h"

namespace calibration {

// Solves with a robust loss and decides what is used: drops corners whose residuals exceed four standard deviations,
// leaves out sightings of which too few corners remain, and uses again what fits after all. Solving and deciding are
// repeated until no decision changes, but at most six times. Then solves without the robust loss and decides again. As
// long as a decision changes, solves again in this way, at most three more times.
//
// Changes `isUsed` in the observations, but never uses a sighting or corner that `given` does not use. Also multiplies
// the corners' standard deviations by one factor for each camera, so that they agree with the residuals. Returns false
// if a solve fails.
bool solveWithoutOutliers(const Observations &given, Observations &observations, const Freedom &freedom,
                          Estimate &estimate);

// Makes the decisions of one round of solveWithoutOutliers: scales the standard deviations and decides for each
// sighting with a pose, and for each of its corners, whether it is used. Returns true if a decision changed.
bool decideOutliers(const Observations &given, Observations &observations, const Estimate &estimate);

// Solves so that bad corners have little effect, without deciding which corners are bad. Scales the corners' standard
// deviations in the same way as solveWithoutOutliers, and returns the factor of each camera. Empty if a solve fails.
std::optional<std::vector<double>> solveRobustly(Observations &observations, const Freedom &freedom,
                                                 Estimate &estimate);

// Multiplies the corners' standard deviations by a factor for each camera.
void scaleDeviations(Observations &observations, const std::vector<double> &factors);

// Returns, for each corner of a sighting, used or not, the length of its residual divided by its standard deviation
// along one axis (SeenCorner::sigma). Empty if a corner cannot be projected.
std::vector<double> residualLengths(const Observations &observations, const Sighting &sighting,
                                    const BlockPointers &blocks);

// Returns the standard deviation of residuals along one axis. It is estimated from the lengths of the residuals, of
// which up to half may be bad. Returns 1 if `lengths` is empty.
double scaleOfLengths(std::vector<double> lengths);

// Returns for each camera the standard deviation of the residuals of good corners, in units of the corners' stated
// standard deviations. Uses the sightings for which takesPart() is true. A camera without such a sighting gets 1.
std::vector<double> residualScales(const Observations &observations, const Estimate &estimate);

// A corner is bad if its residual is longer than this, in standard deviations along one axis. One good corner in 3,000
// has such a residual.
constexpr double greatestLength = 4;

}  // namespace calibration
