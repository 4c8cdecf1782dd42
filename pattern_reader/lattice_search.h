// Finds all checkerboard lattices of a picture: those of every level of its pyramid, each of them once, completed by
// the corners that they lacked, and joined if something in front divides them.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/point_detector.h"

namespace pattern_reader {

constexpr size_t leastLatticeCorners = 9;

// From large to small; points has those of each level.
std::vector<CornerLattice> findLattices(const std::vector<ImageLevel> &levels, const std::vector<LevelPoints> &points);

}  // namespace pattern_reader
