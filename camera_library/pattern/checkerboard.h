// The checkerboard of all patterns but the Halcon-style plate.
#pragma once

#include <array>

#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// A board of w x h inner corners, so (w + 1) x (h + 1) squares with a side of half the grid spacing.
// The top-left square is dark; with polarity false, it is light. A square whose cell of the code is 1 carries a
// mark: a square of the opposite colour with a third of its side, in its centre.
PatternGeometry checkerboard(std::array<int, 2> innerCorners, double gridSpacing, bool polarity,
                             const CodeCells *code = nullptr);

}  // namespace lmlib64
