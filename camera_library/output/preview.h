// Draws the picture of a pattern for the screen.
#pragma once

#include "camera_library/pattern/pattern_geometry.h"
#include "camera_library/tree/node.h"

namespace lmlib64 {

// Returns a picture with one 8-bit channel and no padding. A pixel's grey value is the share of its area that is light:
// from 0 for a dark pixel to 255 for a light one. The pattern is in the middle of the picture, with its quiet zone
// around it. The longer side of the picture has exactly `imageSize` pixels. The shorter side is to scale and rounded,
// but has at least 1 pixel. A geometry of size 0 gives an empty picture. Throws std::bad_alloc.
Binary renderPreview(const PatternGeometry &geometry, int imageSize);

}  // namespace lmlib64
