// Draws closed outlines into 8-bit grey pixels, each pixel's grey being its exact share of area that is covered. It
// takes any polygon; for rectangles along the axes rectangle_raster.h is quicker.
//
// One outline at a time turns what it encloses from light to dark or back. Each of its edges leaves two numbers in
// every pixel that it passes through: by how much it goes down there, and the area to its left. From left to right
// their sums give what is enclosed, so the work grows with the length of the outline; between its edges whole runs
// of pixels are turned at once.
#pragma once

#include <cstdint>
#include <vector>

#include "camera_library/output/pixel_units.h"

namespace lmlib64 {

/// In parts of a pixel (pixel_units.h).
struct PixelPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

/// The last point is joined to the first.
using PixelOutline = std::vector<PixelPoint>;

/// The picture of width × height pixels, row after row without padding: 0 where the outlines enclose all of a pixel,
/// 255 where they enclose nothing. They are filled as one area by the even-odd rule, so an outline inside another is
/// a hole; in a pixel that two of them pass through, their shares count as independent of each other. A point
/// outside the picture counts as the nearest one on its border.
std::vector<std::uint8_t> rasterOutlines(const std::vector<PixelOutline> &outlines, std::int32_t width,
                                         std::int32_t height);

}  // namespace lmlib64
