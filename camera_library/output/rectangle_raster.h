// Draws axis-aligned rectangles as 8-bit grey pixels. The grey value of each pixel is computed from the covered share
// of its area and is off by at most one. This rasteriser draws no other shape and does not depend on patterns.
//
// It is fast because all rows between two consecutive horizontal edges are the same: such a row is computed once and
// copied.
#pragma once

#include <cstdint>
#include <vector>

#include "camera_library/output/pixel_units.h"

namespace lmlib64 {

// A rectangle in fractions of a pixel (pixel_units.h), with left <= right and top <= bottom.
struct PixelRectangle {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
};

// Returns the picture of width × height pixels, row after row without padding. A pixel is 0 if the rectangles cover all
// of it, and 255 if they cover none of it. All rectangles are filled together by the even-odd rule, so a rectangle
// inside another one is a hole. Parts outside the picture are cut off. The rectangles may have any order; the order
// from top to bottom is fastest.
std::vector<std::uint8_t> rasterRectangles(std::vector<PixelRectangle> rectangles, std::int32_t width,
                                           std::int32_t height);

}  // namespace lmlib64
