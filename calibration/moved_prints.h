// Finds prints that moved relative to the others. It compares single photographs, because a joint solve could settle
// between the places of such a print.
#pragma once

#include <vector>

#include "calibration/joint_solve.h"

namespace calibration {

// Returns the indices of the sightings in which a print is not at its usual place. The usual place is the one with the
// most sightings. If two places are equally frequent, it is the earlier one.
//
// A photograph that shows two prints determines where they are relative to each other, independently of all other
// photographs. If these relative poses contradict each other, the print that disagrees with the most other prints has
// moved. If there are only two prints, the second one counts as moved. The lenses and shapes of the estimate need not
// be exact.
std::vector<size_t> findMoved(const Observations &observations, const Freedom &freedom, const Estimate &estimate);

}  // namespace calibration
