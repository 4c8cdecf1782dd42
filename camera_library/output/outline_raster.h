// Draws closed outlines into 8-bit grey pixels, each pixel's grey being its exact share of area that is covered. It
// takes any polygon; for rectangles along the axes rectangle_raster.h is quicker.
//
// The outlines are taken apart into chains of edges that only go down or only go up. Row by row, each piece of a chain
// leaves in the pixels along it by how much it changes the area enclosed there, against the pixel before. From left to
// right the sums of these changes give what is enclosed, so the work grows with the length of the outlines; between
// their edges whole runs of pixels are filled at once.
#pragma once

#include <cstdint>
#include <vector>

#include "camera_library/output/pixel_units.h"

namespace lmlib64 {

// In parts of a pixel (pixel_units.h).
struct PixelPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

// The last point is joined to the first.
using PixelOutline = std::vector<PixelPoint>;

// The picture of width × height pixels, at most 65536 each, row after row without padding: 0 where the outlines
// enclose all of a pixel, 255 where they enclose nothing. They are filled as one area by the even-odd rule, so an
// outline inside another is a hole. It should run the other way round than the one around it: only then is a pixel
// that both pass through exact. A point outside the picture counts as the nearest one on its border.
std::vector<std::uint8_t> rasterOutlines(const std::vector<PixelOutline> &outlines, std::int32_t width,
                                         std::int32_t height);

}  // namespace lmlib64
