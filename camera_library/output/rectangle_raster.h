// Draws axis-aligned rectangles into 8-bit grey pixels; the grey of each pixel is the exact share of its area that is
// covered. It knows nothing of patterns and draws no other shape.
//
// It is fast because all rows between two consecutive edges are the same: such a row is computed once and copied.
#pragma once

#include <cstdint>
#include <vector>

#include "camera_library/output/pixel_units.h"

namespace lmlib64 {

// In fractions of a pixel (pixel_units.h). left <= right and top <= bottom.
struct PixelRectangle {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
};

// The picture of width × height pixels, row after row without padding: 0 if the rectangles cover all of a pixel, 255 if
// they cover none of it. They are filled together by the even-odd rule, so a rectangle inside another is a hole. Parts
// outside the picture are cut off. Takes the rectangles in any order; from top to bottom is fastest.
std::vector<std::uint8_t> rasterRectangles(std::vector<PixelRectangle> rectangles, std::int32_t width,
                                           std::int32_t height);

}  // namespace lmlib64
