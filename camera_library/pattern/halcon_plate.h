// Makes the shapes of the plate in the style of Halcon: round marks in a frame with one filled corner.
//
// With the grid spacing s, the outer edge of the frame is a square with a side of 8 s; this is the outer size. The
// frame is s/4 wide. In the centre of the plate are 7 x 7 round marks with a radius of s/4 and a pitch of s. A
// right-angled triangle with legs of 3 s/4 fills the inner top-left corner of the frame and marks the orientation. Its
// distance to the nearest mark is more than s/4. The gap between neighbouring marks is s/2. The dots of the information
// block lie between the marks, or between the marks and the frame. pattern_code/information_block.h states their
// places.
#pragma once

#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// The number of round marks along each side.
constexpr int halconMarksPerSide = 7;

// Returns the shapes. Frame, marks, triangle and dots are dark; if `polarity` is false, dark and light are exchanged
// within the outer size. Without a code there are no dots.
PatternGeometry halconPlate(double gridSpacing, bool polarity, const CodeCells *code = nullptr);

}  // namespace lmlib64
