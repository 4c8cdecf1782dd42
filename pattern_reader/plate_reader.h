// Reads a plate: 7 × 7 round marks in a dark frame with a triangle in one corner, and the code dots between the marks.
#pragma once

#include <optional>
#include <vector>

#include "pattern_reader/image_level.h"
#include "pattern_reader/mark_lattice.h"
#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

// Reads the plate that a lattice of marks belongs to. Empty if no frame confirms that it is a plate, if its orientation
// is not certain, or if too few of its marks can be measured.
std::optional<PatternReading> readPlate(const std::vector<ImageLevel> &levels, const MarkLattice &start);

}  // namespace pattern_reader
