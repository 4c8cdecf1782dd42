// The unit in which the rasters take coordinates: parts of a pixel, x to the right, y down, the first pixel from 0 to
// pixelUnits. Cairo's raster has the same grain, which is why its pictures can serve as a reference to the last level.
#pragma once

#include <cstdint>

namespace lmlib64 {

// The units in a pixel's side.
constexpr std::int32_t pixelUnits = 256;

}  // namespace lmlib64
