// Makes lattices from saddles. Saddles that look like neighbouring corners of a checkerboard are linked. Then the links
// are followed, starting with four saddles whose links form a square.
#pragma once

#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/point_detector.h"

namespace pattern_reader {

// Links saddles of one level into lattices. Every saddle is in at most one lattice. Lattices of fewer than
// `leastCorners` corners are dropped. The result is sorted from large to small.
std::vector<CornerLattice> linkLattices(const ImageLevel &level, const std::vector<SaddlePoint> &saddles,
                                        size_t leastCorners);

}  // namespace pattern_reader
