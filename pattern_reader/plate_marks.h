// Completes the marks of a plate. The search for lattices has usually found only some of them.
#pragma once

#include <vector>

#include "pattern_reader/image_level.h"
#include "pattern_reader/mark_lattice.h"
#include "pattern_reader/mark_map.h"

namespace pattern_reader {

// Adds the missing marks to `found`, removes marks that cannot belong to the plate, and sets `imageFromCell` to the map
// from cells to the image. False if the result cannot be the marks of one plate.
bool completeMarks(const std::vector<ImageLevel> &levels, MarkLattice &found, MarkMap &imageFromCell);

}  // namespace pattern_reader
