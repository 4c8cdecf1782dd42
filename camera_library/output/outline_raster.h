// Draws closed outlines into 8-bit grey pixels; the grey of each pixel is the exact share of its area that is covered.
// It takes any polygon; for axis-aligned rectangles, rectangle_raster.h is faster.
//
// The outlines are split into chains of edges that only go down or only go up. Row by row, each chain adds to the
// pixels along it the difference of the enclosed area from the previous pixel. Summed from left to right, these
// differences give the enclosed area, so the work grows with the length of the outlines; whole runs of pixels between
// edges are filled at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "camera_library/output/pixel_units.h"

namespace lmlib64 {

// In fractions of a pixel (pixel_units.h).
struct PixelPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

// Closed outlines, each from the end of the one before it to its own end; its last point is connected to its first. All
// are in two lists, because a large board has tens of thousands of them.
struct PixelOutlines {
    std::vector<PixelPoint> points;
    std::vector<std::size_t> ends;  // of each outline, in points

    // Ends the outline of the points added last.
    void close() { ends.push_back(points.size()); }
};

// The picture of width × height pixels, at most 65536 each, row after row without padding: 0 if the outlines enclose
// all of a pixel, 255 if they enclose none of it. They are filled together by the even-odd rule, so an outline inside
// another is a hole. It should have the opposite direction of the one around it; otherwise a pixel that both pass
// through is not exact. A point outside the picture counts as the nearest point on its border.
std::vector<std::uint8_t> rasterOutlines(const PixelOutlines &outlines, std::int32_t width, std::int32_t height);

// The same picture for a caller that keeps only one row at a time: calls `takeRow` for each row from the top, with its
// pixels, which last until the call returns. Width and height are at most 65536.
void rasterOutlineRows(const PixelOutlines &outlines, std::int32_t width, std::int32_t height,
                       const std::function<void(const std::uint8_t *pixels)> &takeRow);

}  // namespace lmlib64
