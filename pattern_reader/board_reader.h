// Determines what a lattice of corners is: a tile, a piece of the plane, or a plain board of a known size.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

// Measures a lattice, which drops and adds corners, and reads it. Empty if it is neither a coded board nor a plain
// board of the given size, if there is one (in inner corners).
std::optional<PatternReading> readBoard(const std::vector<ImageLevel> &levels, CornerLattice &lattice,
                                        const std::optional<cv::Size> &plainBoard);

}  // namespace pattern_reader
