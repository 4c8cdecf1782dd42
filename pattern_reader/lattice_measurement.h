// Measures all corners of a lattice: the borders' directions come from the neighbours, the blur is one value for the
// board.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"

namespace pattern_reader {

// Fits every corner of the lattice, moves it to the measured position and returns the fits, one for each corner.
// Corners that cannot be fitted or differ in contrast from what the lattice says are removed, and those that
// the lattice lacks are added where the measured ones say they must be. The blur in pixels, if known, is not measured.
std::vector<CornerFit> measureCorners(const cv::Mat &picture, CornerLattice &lattice,
                                      std::optional<float> knownBlur = std::nullopt);

}  // namespace pattern_reader
