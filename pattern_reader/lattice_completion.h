// Finds the missing corners of a lattice at the places that its other corners predict.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"

namespace pattern_reader {

// Removes corners that are out of line with their neighbours. Then looks for missing corners inside and around the
// lattice, in the pyramid level that suits the local spacing, until no more are found. Finally, once more removes
// corners that are out of line.
void completeLattice(CornerLattice &lattice, const std::vector<ImageLevel> &levels);

}  // namespace pattern_reader
