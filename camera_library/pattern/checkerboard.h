// Makes the shapes of a checkerboard, plain or coded.
#pragma once

#include <array>

#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// Returns a board of w x h inner corners, that is (w + 1) x (h + 1) squares with sides of half the grid spacing. The
// top-left square is dark, or light if `polarity` is false. A square carries a mark if its cell in the code is 1. The
// mark is a smaller square of the opposite colour in the centre of the square, with a side a third as long. Without a
// code there are no marks.
PatternGeometry checkerboard(std::array<int, 2> innerCorners, double gridSpacing, bool polarity,
                             const CodeCells *code = nullptr);

}  // namespace lmlib64
