// Finds prints that moved relative to the others. The poses that are compared come from single photographs, not from a
// joint solve. A joint solve has only one pose for each print. For a print that has moved, this pose lies between the
// places where the print was.
#pragma once

#include <vector>

#include "calibration/joint_solve.h"

namespace calibration {

// Returns the indices of the sightings in which a print is not at its usual place among the other prints. The usual
// place is the one with the most sightings. If two places have equally many, it is the one that was seen first.
//
// A photograph that shows two prints determines where they are relative to each other, independently of all other
// photographs. If these relative poses contradict each other, the print that disagrees with the most other prints has
// moved. If two prints contradict only each other, the one with the higher index counts as moved. Only prints that
// appear together in a photograph are compared. The lenses and shapes of the estimate need not be exact.
std::vector<size_t> findMoved(const Observations &observations, const Freedom &freedom, const Estimate &estimate);

}  // namespace calibration
