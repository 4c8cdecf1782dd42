// The unit of the coordinates of both rasterisers, a fraction of a pixel. x runs to the right, y runs down, and the
// first pixel extends from 0 to pixelUnits. Cairo uses the same fraction, so it can draw the same outlines as a
// reference.
#pragma once

#include <cstdint>

namespace lmlib64 {

// The number of units along the side of a pixel.
constexpr std::int32_t pixelUnits = 256;

}  // namespace lmlib64
