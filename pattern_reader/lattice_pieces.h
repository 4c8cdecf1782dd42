// Pieces of a board that something in front of it has cut apart, and corners that do not belong to it.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"

namespace pattern_reader {

// Joins lattices that continue each other: where one, carried on, has its corners, there are the other's. Sorted from
// large to small, as the lattices must be.
void joinPieces(std::vector<CornerLattice> &lattices, const std::vector<ImageLevel> &levels);

// Keeps the corners that lie where the trusted corners around them say, and only those; `trusted` has one entry for
// each corner.
void trimToTrusted(CornerLattice &lattice, const std::vector<bool> &trusted);

}  // namespace pattern_reader
