// Determines which corners of a board to trust. A lattice whose place in the position code is known may still contain
// points that only look like corners. It may also contain pieces that were joined to it with a shift of one step.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/place_finder.h"
#include "pattern_reader/square_marks.h"

namespace pattern_reader {

// A corner is trusted if the marks of the squares around it agree with the code. One square that disagrees cancels two
// that agree. The function removes every corner whose position does not fit the trusted corners around it, or that has
// too few trusted corners around it for this check. If the remaining corners form several separate pieces, the function
// also removes every piece in which too few squares agree with the code.
void keepTrustedCorners(CornerLattice &lattice, const std::vector<SquareReading> &marks, const Place &place);

}  // namespace pattern_reader
