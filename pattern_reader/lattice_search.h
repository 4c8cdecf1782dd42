// Finds all checkerboard lattices of a picture, in every level of its pyramid. A lattice that is visible in several
// levels is returned once. Missing corners are added. If something in front of a board divides it into several
// lattices, these are joined.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/point_detector.h"

namespace pattern_reader {

constexpr size_t leastLatticeCorners = 9;

// Returns the lattices. They were sorted from large to small before any were joined, so a joined lattice may be larger
// than those before it. points[i] has the points of levels[i].
std::vector<CornerLattice> findLattices(const std::vector<ImageLevel> &levels, const std::vector<LevelPoints> &points);

}  // namespace pattern_reader
