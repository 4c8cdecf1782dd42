// The shapes of a pattern as outlines for a raster.
#pragma once

#include <cstdint>

#include "camera_library/output/outline_raster.h"
#include "camera_library/output/pixel_units.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// Converts millimetres of a drawing to the rasters' fractions of a pixel.
class PixelScale {
public:
    // `startPixels` is where the drawing's origin is, in pixels. No point may be left of the picture or above it.
    PixelScale(Point startPixels, Point pixelsPerMm) : start(startPixels), perMm(pixelsPerMm) {}

    double pixelsX(double mm) const { return start.x + mm * perMm.x; }
    double pixelsY(double mm) const { return start.y + mm * perMm.y; }
    std::int32_t x(double mm) const { return units(pixelsX(mm)); }
    std::int32_t y(double mm) const { return units(pixelsY(mm)); }
    PixelPoint point(double xMm, double yMm) const { return {x(xMm), y(yMm)}; }
    const Point &pixelsPerMm() const { return perMm; }

private:
    static std::int32_t units(double pixels) {
        // Adding 0.5 rounds correctly, because no value is negative. Calling lround would take a sixth of a large
        // board's time.
        // NOLINTNEXTLINE(bugprone-incorrect-roundings)
        return static_cast<std::int32_t>(pixels * pixelUnits + 0.5);
    }

    Point start;
    Point perMm;
};

// All shapes of the geometry. The outline of a hole has the opposite direction of the one around it, as the raster
// needs it. A circle becomes a polygon of the same area that is nowhere farther than 0.03 pixels off. Throws
// std::bad_alloc.
PixelOutlines pixelOutlines(const PatternGeometry &geometry, const PixelScale &scale);

}  // namespace lmlib64
