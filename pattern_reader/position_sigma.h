// Estimates the standard deviation of the position of each corner of a lattice: the standard deviation that the
// corner's fit gives, multiplied by a factor. The factor is the same for all undisturbed corners of the lattice. It
// follows from how much the shapes of neighbouring rows and columns of corners differ.
#pragma once

#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"

namespace pattern_reader {

// Sets `sigma` and `disturbed` of every corner of a measured lattice. The sigma of a disturbed corner is at least three
// times that of its fit. fits[i] is the fit of lattice.corners[i].
void estimateSigmas(CornerLattice &lattice, const std::vector<CornerFit> &fits);

}  // namespace pattern_reader
