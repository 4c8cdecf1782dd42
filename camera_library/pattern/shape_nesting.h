// Finds the shapes of a geometry that are holes. Some outputs draw a hole correctly only if its outline runs in the
// opposite direction to the outline around it.
#pragma once

#include <vector>

#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// Returns a value for every shape: first the rectangles, then the polygons, then the circles. The value is true if the
// shape is a hole, that is, if it lies within an odd number of other shapes. The shapes may touch but must not cross.
// Throws std::bad_alloc. Each shape S is compared only with shapes whose vertical extent includes the top of S. Apart
// from sorting the shapes, the time is proportional to the number of these comparisons.
std::vector<bool> holesOf(const PatternGeometry &geometry);

}  // namespace lmlib64
