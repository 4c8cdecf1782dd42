// Which numbers of each print's shape the solve may vary, and what is known of them before.
#pragma once

#include "calibration/joint_solve.h"

namespace calibration {

// How much a print may bend: not at all, as a polynomial of order 2, or of order 3.
enum class Bend { Flat, Quadratic, Cubic };

struct MeasuredPrint;

// Sets the shapes and priors of the freedom, and starts the estimate's shapes with what was measured. A measured print
// has a fixed scale, and its ratio is known as well as a caliper can tell. If no print of a group was measured, the
// scale of the group's first print is fixed. Numbers that may not vary are reset.
void setShapes(const Observations &observations, const std::vector<Bend> &bends,
               const std::vector<MeasuredPrint> &measured, Estimate &estimate, Freedom &freedom);

// The bends of a freedom that setShapes() made.
std::vector<Bend> bendsOf(const Freedom &freedom);

}  // namespace calibration
