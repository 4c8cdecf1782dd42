// Draws axis-aligned rectangles into 8-bit grey pixels, each pixel's grey being its exact share of area that
// is covered. It knows nothing of patterns and draws no other shape.
//
// It is quick because between two edges that follow each other from top to bottom all rows are the same:
// such a row is worked out once and copied.
#pragma once

#include <cstdint>
#include <vector>

#include "camera_library/output/pixel_units.h"

namespace lmlib64 {

// In parts of a pixel (pixel_units.h). left <= right and top <= bottom.
struct PixelRectangle {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
};

// The picture of width × height pixels, row after row without padding: 0 where the rectangles cover all of a
// pixel, 255 where they cover nothing. They are filled as one area by the even-odd rule, so a rectangle inside
// another is a hole. What lies outside the picture is cut off. Takes any order; from top to bottom is quickest.
std::vector<std::uint8_t> rasterRectangles(std::vector<PixelRectangle> rectangles, std::int32_t width,
                                           std::int32_t height);

}  // namespace lmlib64
