// The unit in which the rasters take coordinates: parts of a pixel, x to the right, y down, the first pixel from 0 to
// pixelUnits. Edges have this grain in Cairo's raster too, so that both give the same picture.
#pragma once

#include <cstdint>

namespace lmlib64 {

/// The units in a pixel's side.
constexpr std::int32_t pixelUnits = 256;

}  // namespace lmlib64
