// Determines which corners of a board to trust. A lattice whose place in the code is known may still contain points
// that only look like corners. It may also contain pieces that were joined to it with a shift of one step.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/place_finder.h"
#include "pattern_reader/square_marks.h"

namespace pattern_reader {

// Corners are trusted if the marks of their squares agree with the code. Removes the corners that are not in line with
// the trusted ones. If the remaining corners form several connected pieces, removes every piece with too few agreeing
// squares.
void keepTrustedCorners(CornerLattice &lattice, const std::vector<SquareReading> &marks, const Place &place);

}  // namespace pattern_reader
