// Decides which numbers of each print's shape the solve may vary, and sets their priors.
#pragma once

#include "calibration/joint_solve.h"

namespace calibration {

// How a print may bend: not at all, as a polynomial of order 2, or as one of order 3.
enum class Bend { Flat, Quadratic, Cubic };

struct MeasuredPrint;

// Sets `shapes` and `priors` of `freedom`. In the estimate's shapes, sets `reach` and the numbers that may not vary:
// - The scale of a measured print is set to its measured value.
// - If no print of a group was measured, the scale of the group's first print is set to 1.
// - `bends` limits the order of each print's bend. All bend terms of a higher order are set to 0.
// The ratio of the x scale to the y scale may vary for every print. For a measured print, this ratio has a prior. Its
// mean is the measured ratio, and its standard deviation is the one that a measurement with a caliper gives.
void setShapes(const Observations &observations, const std::vector<Bend> &bends,
               const std::vector<MeasuredPrint> &measured, Estimate &estimate, Freedom &freedom);

// Returns the bends with which setShapes() made this freedom.
std::vector<Bend> bendsOf(const Freedom &freedom);

}  // namespace calibration
