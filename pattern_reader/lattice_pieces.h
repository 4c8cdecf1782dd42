// Pieces of a board that something in front of it has cut apart.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"

namespace pattern_reader {

// Joins lattices that continue each other: where one, carried on, has its corners, there are the other's. Sorted from
// large to small, as the lattices must be.
void joinPieces(std::vector<CornerLattice> &lattices, const std::vector<ImageLevel> &levels);

// Whether a piece whose cells are those of the base lies where the base, carried on, has them; the farther away, the
// less exactly.
bool continues(const CornerLattice &base, const CornerLattice &piece);

}  // namespace pattern_reader
