// Estimates the standard deviations of the positions of a lattice's corners. They are those of the fits, multiplied by
// one factor for the whole lattice. The factor follows from how smooth the rows of corners are.
#pragma once

#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"

namespace pattern_reader {

// Sets `sigma` and `disturbed` of every corner of a measured lattice. The sigma of a disturbed corner is at least three
// times that of its fit. fits[i] is the fit of lattice.corners[i].
void estimateSigmas(CornerLattice &lattice, const std::vector<CornerFit> &fits);

}  // namespace pattern_reader
