// Measures all corners of a lattice. The directions and bends of the borders at a corner, and the change of light, are
// estimated from the neighbouring corners. If a neighbour is missing, its place is computed with a homography fitted to
// corners spread over the lattice.
//
// The corners are first fitted in the finest level in which a lattice step is at most 28 pixels long (in the coarsest
// level if there is none). Then they are fitted again in the level that suits the blur and the step best. If a board is
// blurred or very large, a coarser level loses little accuracy, and fewer pixels around each corner have to be fitted.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"

namespace pattern_reader {

// Fits every corner of the lattice and moves it to the measured position. Returns the fits, one for each corner, in the
// image's pixels. Corners that cannot be fitted, or whose contrast has the wrong sign or is too weak, are removed.
// Corners that the lattice lacks are fitted at the places that the measured ones predict, and are added if they are
// clear. Sets `sigma` and `disturbed` of every corner. If `knownBlur` is given (in pixels), it is used instead of a
// measured blur.
std::vector<CornerFit> measureCorners(const std::vector<ImageLevel> &levels, CornerLattice &lattice,
                                      std::optional<float> knownBlur = std::nullopt);

}  // namespace pattern_reader
