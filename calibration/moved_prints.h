// Finds prints that did not keep their place among the others, before a joint solve could settle between the places.
#pragma once

#include <vector>

#include "calibration/joint_solve.h"

namespace calibration {

// The sightings in use of prints that are elsewhere than in most of their sightings; if no place was seen more often,
// elsewhere than in the earlier ones. A photograph that shows two prints says where they are relative to each other,
// whatever all other photographs say. If these relative poses contradict each other, the print that disagrees with the
// most other prints has moved; if there are only two, the second. The lenses and shapes of the estimate need not be
// exact. Returns indices of sightings.
std::vector<size_t> findMoved(const Observations &observations, const Freedom &freedom, const Estimate &estimate);

}  // namespace calibration
