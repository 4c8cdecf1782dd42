// The picture of a pattern for the screen.
#pragma once

#include "camera_library/pattern/pattern_geometry.h"
#include "camera_library/tree/node.h"

namespace lmlib64 {

// One 8-bit channel without padding; the grey of each pixel is the share of its area that is light: 0 dark, 255 light.
// The picture shows the outer size and its quiet zone. Its longer side is exactly `imageSize` pixels. Its shorter side
// is to scale, rounded, but at least 1 pixel. The pattern is in the middle. A geometry of size 0 gives an empty
// picture. Throws std::bad_alloc.
Binary renderPreview(const PatternGeometry &geometry, int imageSize);

}  // namespace lmlib64
