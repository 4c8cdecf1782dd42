// The marks of one plate: completes what the search for lattices has found.
#pragma once

#include <vector>

#include "pattern_reader/image_level.h"
#include "pattern_reader/mark_lattice.h"
#include "pattern_reader/mark_map.h"

namespace pattern_reader {

// Looks for the missing marks, leaves out what is not a mark, and maps cells to the image. False if the rest cannot be
// the marks of one plate.
bool completeMarks(const std::vector<ImageLevel> &levels, MarkLattice &found, MarkMap &imageFromCell);

}  // namespace pattern_reader
