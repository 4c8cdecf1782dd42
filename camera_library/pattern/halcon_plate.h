// The plate in the style of Halcon: round marks within a frame, one corner of which is filled.
//
// With s the grid spacing: outer size 8 s; a frame s/4 wide whose outer edge is the outer size; 7 x 7 round
// marks of radius s/4 at pitch s, centred in the frame; and in the frame's inner top-left corner a
// right-angled triangle with legs of 3 s/4, which fixes the orientation and leaves more than s/4 to the
// nearest mark. Between neighbouring marks s/2 stays free, but for the dots of the code, which
// pattern_code/information_block.h places.
#pragma once

#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// Round marks along either side.
constexpr int halconMarksPerSide = 7;

// Frame, marks, triangle and dots are dark; with polarity false, dark and light are exchanged within the outer
// size. Without a code there are no dots.
PatternGeometry halconPlate(double gridSpacing, bool polarity, const CodeCells *code = nullptr);

}  // namespace lmlib64
