// How the shapes of a geometry lie within one another, for outputs that need the direction of an outline: a raster, or
// a format that fills by the non-zero rule, draws a hole only if it has the opposite direction of the shape around it.
#pragma once

#include <vector>

#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// For every shape, the rectangles first, then the polygons, then the circles: true if it lies within an odd number of
// others, so that it is a hole. The shapes may touch but do not cross. Throws std::bad_alloc. The work grows with the
// number of shapes times the number of those at the same height.
std::vector<bool> holesOf(const PatternGeometry &geometry);

}  // namespace lmlib64
