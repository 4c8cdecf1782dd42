// Determines what a lattice of corners is: a tile of the position code, a part of the position code's plane, or a plain
// board of a known size.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

// Measures a lattice and reads it. The measurement removes and adds corners. `plainBoard` is the size, in inner
// corners, of the plain board to search for, if any. The result is empty if the lattice is neither a coded board nor
// this plain board. It is also empty if fewer than leastLatticeCorners corners can be measured, or if fewer than
// leastLatticeCorners corners of a coded board can be trusted (lattice_trust.h).
std::optional<PatternReading> readBoard(const std::vector<ImageLevel> &levels, CornerLattice &lattice,
                                        const std::optional<cv::Size> &plainBoard);

}  // namespace pattern_reader
