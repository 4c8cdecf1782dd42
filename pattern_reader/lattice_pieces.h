// Joins the lattices of a board that is divided by something in front of it.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"

namespace pattern_reader {

// Joins lattices that continue each other: if one is extrapolated, its lattice points coincide with the corners of the
// other. The lattices must be sorted from large to small. They stay in this order, but a joined lattice may then be
// larger than those before it.
void joinPieces(std::vector<CornerLattice> &lattices, const std::vector<ImageLevel> &levels);

// Extrapolates the base to those corners of the piece that are closest to it. True if most of these corners lie where
// the base predicts them. The piece's cells must be in the base's coordinates. The tolerance grows with the distance
// from the base.
bool continues(const CornerLattice &base, const CornerLattice &piece);

}  // namespace pattern_reader
