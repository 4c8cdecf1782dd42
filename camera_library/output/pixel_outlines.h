// Converts the shapes of a pattern to outlines for a rasteriser.
#pragma once

#include <cstdint>

#include "camera_library/output/outline_raster.h"
#include "camera_library/output/pixel_units.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// Converts millimetres of a drawing to the rasterisers' fractions of a pixel.
class PixelScale {
public:
    // `startPixels` is the place of the drawing's origin in pixels. No point may be left of the picture or above it.
    PixelScale(Point startPixels, Point pixelsPerMm) : start(startPixels), perMm(pixelsPerMm) {}

    double pixelsX(double mm) const { return start.x + mm * perMm.x; }
    double pixelsY(double mm) const { return start.y + mm * perMm.y; }
    std::int32_t x(double mm) const { return units(pixelsX(mm)); }
    std::int32_t y(double mm) const { return units(pixelsY(mm)); }
    PixelPoint point(double xMm, double yMm) const { return {x(xMm), y(yMm)}; }
    const Point &pixelsPerMm() const { return perMm; }

private:
    static std::int32_t units(double pixels) {
        // Adding 0.5 rounds correctly, because no value is negative. Calls of lround would make up a sixth of the time
        // for drawing a large board. NOLINTNEXTLINE(bugprone-incorrect-roundings)
        return static_cast<std::int32_t>(pixels * pixelUnits + 0.5);
    }

    Point start;
    Point perMm;
};

// Returns the outlines of all shapes. The outline of a hole runs in the opposite direction to the outline around it, as
// the rasteriser requires. A circle becomes a polygon of the same area, with errors of at most 0.03 pixels. Throws
// std::bad_alloc.
PixelOutlines pixelOutlines(const PatternGeometry &geometry, const PixelScale &scale);

}  // namespace lmlib64
