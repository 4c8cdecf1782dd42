// The plate in the style of Halcon: round marks within a frame, one corner of which is filled.
//
// With the grid spacing s, the outer size is 8 s. The outer edge of the frame is the outer size, and the frame is s/4
// wide. Centred in it are 7 x 7 round marks with a radius of s/4 and a pitch of s. A right-angled triangle with legs of
// 3 s/4 in the inner top-left corner of the frame marks the orientation; it leaves more than s/4 to the nearest mark.
// Between neighbouring marks, s/2 is free except for the dots of the code, which pattern_code/information_block.h
// places.
#pragma once

#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// The number of round marks along each side.
constexpr int halconMarksPerSide = 7;

// Frame, marks, triangle and dots are dark; with polarity false, dark and light are exchanged within the outer
// size. Without a code there are no dots.
PatternGeometry halconPlate(double gridSpacing, bool polarity, const CodeCells *code = nullptr);

}  // namespace lmlib64
