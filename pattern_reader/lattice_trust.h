// Which corners of a board are where the code says: a lattice that has been placed may still hold points that only look
// like corners, and pieces that were joined to it a step aside.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/place_finder.h"
#include "pattern_reader/square_marks.h"

namespace pattern_reader {

// Drops the corners that are out of line with those whose squares were read as the code has them, then the pieces
// without a link to the rest that have too few such squares of their own.
void keepTrustedCorners(CornerLattice &lattice, const std::vector<SquareReading> &marks, const Place &place);

}  // namespace pattern_reader
