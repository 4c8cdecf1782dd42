// Joins the lattices of a board that is divided by something in front of it.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"

namespace pattern_reader {

// Joins lattices that continue each other. To compare two lattices, the larger one is extrapolated. If its lattice
// points then coincide with the corners of the smaller lattice, these corners are added to the larger lattice, and the
// smaller lattice is removed from the list. Then looks for missing corners of the joined lattice
// (lattice_completion.h). Only the sixteen largest lattices are examined, and only lattices of at least twelve corners
// are extrapolated. The lattices must be sorted from large to small. Their order does not change, so they may no longer
// be sorted afterwards: a lattice that has grown may be larger than those before it.
void joinPieces(std::vector<CornerLattice> &lattices, const std::vector<ImageLevel> &levels);

// True if the piece lies where the base continues. To check this, the base is extrapolated to those corners of the
// piece that are closest to the base. At least three quarters of these corners must lie where the base predicts them.
// The tolerance grows with the distance from the base. The piece's cells must already be in the base's coordinates.
bool continues(const CornerLattice &base, const CornerLattice &piece);

}  // namespace pattern_reader
