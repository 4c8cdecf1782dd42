// Finds corners that a lattice lacks, at the places that its own corners predict.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"

namespace pattern_reader {

// Drops corners out of line with their neighbours, then looks for the missing ones around and inside the lattice in
// the level that suits the local spacing, until there are no more.
void completeLattice(CornerLattice &lattice, const std::vector<ImageLevel> &levels);

}  // namespace pattern_reader
