// Decides which numbers of each print's shape the solve may vary, and sets their priors.
#pragma once

#include "calibration/joint_solve.h"

namespace calibration {

// How a print may bend: not at all, as a polynomial of order 2, or as one of order 3.
enum class Bend { Flat, Quadratic, Cubic };

struct MeasuredPrint;

// Sets `shapes` and `priors` of `freedom`. In the estimate's shapes, sets `reach` and the numbers that may not vary.
// These are the following: the scale of a measured print gets its measured value. If no print of a group was measured,
// the scale of the group's first print is set to 1. The terms of the bend that `bends` does not allow are set to 0. The
// ratio of a measured print may vary, but its prior is the measured ratio with the standard deviation of a caliper.
void setShapes(const Observations &observations, const std::vector<Bend> &bends,
               const std::vector<MeasuredPrint> &measured, Estimate &estimate, Freedom &freedom);

// Returns the bends with which setShapes() made this freedom.
std::vector<Bend> bendsOf(const Freedom &freedom);

}  // namespace calibration
