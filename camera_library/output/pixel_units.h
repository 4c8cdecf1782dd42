// Defines the unit of the coordinates that both rasterisers (outline_raster.h, rectangle_raster.h) take. It is a
// fraction of a pixel. x runs to the right, y runs down, and the first pixel extends from 0 to pixelUnits along both
// axes. Cairo uses the same unit, so its pictures of the same outlines can serve as a reference.
#pragma once

#include <cstdint>

namespace lmlib64 {

// The number of units along the side of a pixel.
constexpr std::int32_t pixelUnits = 256;

}  // namespace lmlib64
