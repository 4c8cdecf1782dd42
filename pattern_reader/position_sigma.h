// The standard deviations of a lattice's corners, from those that the fits claim and how well the corners lie in line.
#pragma once

#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"

namespace pattern_reader {

// Sets sigma and disturbed of every corner of a measured lattice; fits belongs to lattice.corners.
void estimateSigmas(CornerLattice &lattice, const std::vector<CornerFit> &fits);

}  // namespace pattern_reader
