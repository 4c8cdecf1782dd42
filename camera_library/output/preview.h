// The picture of a pattern for the screen.
#pragma once

#include "camera_library/pattern/pattern_geometry.h"
#include "camera_library/tree/node.h"

namespace lmlib64 {

// One 8-bit channel, rows packed, 0 dark and 255 light, each pixel the light share of its area. The picture
// shows the outer size and its quiet zone; its longer side is exactly `imageSize` pixels, the shorter one
// the nearest number to scale, at least 1, with the rounding shared by both borders. A geometry of size 0
// gives an empty picture. Throws std::bad_alloc where memory does not suffice.
Binary renderPreview(const PatternGeometry &geometry, int imageSize);

}  // namespace lmlib64
