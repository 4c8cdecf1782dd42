// Draws closed outlines as 8-bit grey pixels. The grey value of each pixel is computed from the covered share of its
// area and is off by at most about one. The outlines may be any polygons; for axis-aligned rectangles,
// rectangle_raster.h is faster.
//
// The outlines are split into chains of edges that only go down or only go up. Each row of pixels has a list of
// differences: the enclosed area of each pixel minus that of the pixel to its left. A chain changes only the
// differences of the pixels that it passes through and of the next pixel to the right. Adding up the differences from
// left to right gives the enclosed areas. Where no chain has changed a difference, the enclosed area is the same from
// pixel to pixel. Such a run of pixels is filled with one grey value without adding anything up. Apart from this
// filling, the time grows only with the length of the outlines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "camera_library/output/pixel_units.h"

namespace lmlib64 {

// A point in fractions of a pixel (pixel_units.h).
struct PixelPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
};

// Closed outlines. In `points`, an outline begins where the previous outline ends. The last point of an outline is
// connected to its first point. All outlines share these two lists. A large board has tens of thousands of outlines, so
// a list for each outline would take many allocations.
struct PixelOutlines {
    std::vector<PixelPoint> points;
    std::vector<std::size_t> ends;  // for each outline, the index in `points` after its last point

    // Ends the outline that consists of the points added since the last call.
    void close() { ends.push_back(points.size()); }
};

// Returns the picture of width × height pixels, row after row without padding. Width and height are at most 65536. A
// pixel is 0 if the outlines enclose all of it, and 255 if they enclose none of it. All outlines are filled together by
// the even-odd rule, so an outline inside another one is a hole. The outline of a hole should run in the opposite
// direction to the outline around it. Otherwise a pixel that both outlines pass through has a wrong grey value. A point
// outside the picture counts as the nearest point on the picture's border.
std::vector<std::uint8_t> rasterOutlines(const PixelOutlines &outlines, std::int32_t width, std::int32_t height);

// Makes the same picture for a caller that needs only one row at a time. Calls `takeRow` with the pixels of each row,
// from the top. The pixels are valid until `takeRow` returns. Width and height are at most 65536.
void rasterOutlineRows(const PixelOutlines &outlines, std::int32_t width, std::int32_t height,
                       const std::function<void(const std::uint8_t *pixels)> &takeRow);

}  // namespace lmlib64
