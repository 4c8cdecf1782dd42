// Estimates the standard deviations of the positions of a lattice's corners. They follow from the standard deviations
// of the fits and from the smoothness of the rows of corners.
#pragma once

#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"

namespace pattern_reader {

// Sets sigma and disturbed of every corner of a measured lattice. fits[i] is the fit of lattice.corners[i].
void estimateSigmas(CornerLattice &lattice, const std::vector<CornerFit> &fits);

}  // namespace pattern_reader
