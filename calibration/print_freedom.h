// Decides which numbers of each print's shape the solve may vary, and sets their priors.
#pragma once

#include "calibration/joint_solve.h"

namespace calibration {

// How a print may bend: not at all, as a polynomial of order 2, or as one of order 3.
enum class Bend { Flat, Quadratic, Cubic };

struct MeasuredPrint;

// Sets `shapes` and `priors` of `freedom`. In the estimate's shapes, sets `reach` and the numbers that may not vary.
// The scale of a measured print is fixed to the measured scale, and the prior of its ratio is as exact as a caliper. If
// no print of a group was measured, the scale of the group's first print is fixed to 1. Bends that may not vary are set
// to 0.
void setShapes(const Observations &observations, const std::vector<Bend> &bends,
               const std::vector<MeasuredPrint> &measured, Estimate &estimate, Freedom &freedom);

// Returns the bends with which setShapes() made this freedom.
std::vector<Bend> bendsOf(const Freedom &freedom);

}  // namespace calibration
