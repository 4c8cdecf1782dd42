// Draws the picture of a pattern for the screen.
#pragma once

#include "camera_library/pattern/pattern_geometry.h"
#include "camera_library/tree/node.h"

namespace lmlib64 {

// Returns a picture with one 8-bit channel and no padding. The grey value of a pixel is the light share of its area: 0
// is dark, 255 is light. The pattern is in the middle of the picture, with its quiet zone around it. The longer side of
// the picture has exactly `imageSize` pixels. The shorter side is to scale and rounded, but has at least 1 pixel. A
// geometry of size 0 gives an empty picture. Throws std::bad_alloc.
Binary renderPreview(const PatternGeometry &geometry, int imageSize);

}  // namespace lmlib64
