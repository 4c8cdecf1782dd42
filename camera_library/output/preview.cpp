#include "camera_library/output/preview.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "camera_library/output/outline_raster.h"
#include "camera_library/output/rectangle_raster.h"
#include "camera_library/pattern/shape_nesting.h"

namespace lmlib64 {

namespace {

double secondsSince1970() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// Where a geometry is in the picture. The outer size is centred, so opposite borders are equally wide even if the
// picture's size is rounded.
struct Placement {
    double pixelsPerMm = 0.0;
    double left = 0.0;  // of the outer size, in pixels
    double top = 0.0;
};

// Converts the geometry's millimetres to the rasters' fractions of a pixel.
class Scale {
public:
    explicit Scale(const Placement &patternPlacement) : placement(patternPlacement) {}

    std::int32_t x(double mm) const { return units(placement.left, mm); }
    std::int32_t y(double mm) const { return units(placement.top, mm); }
    PixelPoint point(double xMm, double yMm) const { return {x(xMm), y(yMm)}; }

private:
    std::int32_t units(double start, double mm) const {
        // Adding 0.5 rounds correctly, because no value is negative. Calling lround would take a sixth of a large
        // board's time.
        // NOLINTNEXTLINE(bugprone-incorrect-roundings)
        return static_cast<std::int32_t>((start + mm * placement.pixelsPerMm) * pixelUnits + 0.5);
    }

    Placement placement;
};

std::vector<std::uint8_t> rasterOfRectangles(const PatternGeometry &geometry, const Scale &scale, int width,
                                             int height) {
    std::vector<PixelRectangle> rectangles;
    rectangles.reserve(geometry.rectangles.size());
    for (const Rectangle &rectangle : geometry.rectangles) {
        rectangles.push_back(
            {scale.x(rectangle.left), scale.y(rectangle.top), scale.x(rectangle.right), scale.y(rectangle.bottom)});
    }
    return rasterRectangles(std::move(rectangles), width, height);
}

// The corners of the regular polygon that is drawn instead of a circle with this radius. It is centred on the origin
// and has the same area as the circle.
std::vector<Point> cornersOfCircle(double radiusMm, double pixelsPerMm) {
    constexpr double farthestOffPixels = 0.03;
    constexpr double pi = 3.141592653589793;
    const double radiusPixels = std::max(radiusMm * pixelsPerMm, 0.1);
    const auto count = static_cast<int>(std::ceil(pi / std::acos(1.0 - farthestOffPixels / radiusPixels)));
    const double step = 2.0 * pi / count;
    const double distance = radiusMm * std::sqrt(step / std::sin(step));
    std::vector<Point> corners;
    corners.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        corners.push_back({distance * std::cos(i * step), distance * std::sin(i * step)});
    }
    return corners;
}

// As seen in the picture, where y runs down.
bool isClockwise(const Polygon &polygon) {
    double twiceArea = 0.0;
    Point from = polygon.back();
    for (const Point &to : polygon) {
        twiceArea += from.x * to.y - to.x * from.y;
        from = to;
    }
    return twiceArea > 0.0;
}

void addCircles(const std::vector<Circle> &circles, const Scale &scale, double pixelsPerMm,
                std::vector<PixelOutline> &outlines) {
    std::map<double, std::vector<Point>> cornersByRadius;  // a plate has three sizes of circles, and many of each
    for (const Circle &circle : circles) {
        std::vector<Point> &corners = cornersByRadius[circle.radius];
        if (corners.empty()) {
            corners = cornersOfCircle(circle.radius, pixelsPerMm);
        }
        PixelOutline &outline = outlines.emplace_back();
        outline.reserve(corners.size());
        for (const Point &corner : corners) {
            outline.push_back(scale.point(circle.centre.x + corner.x, circle.centre.y + corner.y));
        }
    }
}

// All shapes, clockwise, in the order of holesOf. The polygons of a geometry may have either direction.
std::vector<PixelOutline> outlinesOf(const PatternGeometry &geometry, const Scale &scale, double pixelsPerMm) {
    std::vector<PixelOutline> outlines;
    outlines.reserve(geometry.rectangles.size() + geometry.polygons.size() + geometry.circles.size());
    for (const Rectangle &r : geometry.rectangles) {
        outlines.push_back({scale.point(r.left, r.top), scale.point(r.right, r.top), scale.point(r.right, r.bottom),
                            scale.point(r.left, r.bottom)});
    }
    for (const Polygon &polygon : geometry.polygons) {
        PixelOutline &outline = outlines.emplace_back();
        for (const Point &corner : polygon) {
            outline.push_back(scale.point(corner.x, corner.y));
        }
        if (!isClockwise(polygon)) {
            std::reverse(outline.begin(), outline.end());
        }
    }
    addCircles(geometry.circles, scale, pixelsPerMm, outlines);
    return outlines;
}

// A hole must run in the opposite direction to the shape around it. Otherwise, pixels that both outlines cross get a
// wrong grey level.
std::vector<std::uint8_t> rasterOfOutlines(const PatternGeometry &geometry, const Scale &scale, double pixelsPerMm,
                                           int width, int height) {
    std::vector<PixelOutline> outlines = outlinesOf(geometry, scale, pixelsPerMm);
    const std::vector<bool> isHole = holesOf(geometry);
    for (std::size_t i = 0; i < outlines.size(); ++i) {
        if (isHole[i]) {
            std::reverse(outlines[i].begin(), outlines[i].end());
        }
    }
    return rasterOutlines(outlines, width, height);
}

}  // namespace

Binary renderPreview(const PatternGeometry &geometry, int imageSize) {
    Binary image;
    image.timestamp = secondsSince1970();
    if (geometry.width <= 0.0 || geometry.height <= 0.0) {
        return image;
    }
    const double widthMm = geometry.width + 2.0 * geometry.quietZone;
    const double heightMm = geometry.height + 2.0 * geometry.quietZone;
    const double pixelsPerMm = imageSize / std::max(widthMm, heightMm);
    image.width = std::clamp(static_cast<int>(std::lround(widthMm * pixelsPerMm)), 1, imageSize);
    image.height = std::clamp(static_cast<int>(std::lround(heightMm * pixelsPerMm)), 1, imageSize);

    const Placement placement{pixelsPerMm, (image.width - geometry.width * pixelsPerMm) / 2.0,
                              (image.height - geometry.height * pixelsPerMm) / 2.0};
    const bool onlyRectangles = geometry.circles.empty() && geometry.polygons.empty();
    const Scale scale(placement);
    image.bytes = onlyRectangles ? rasterOfRectangles(geometry, scale, image.width, image.height)
                                 : rasterOfOutlines(geometry, scale, pixelsPerMm, image.width, image.height);
    return image;
}

}  // namespace lmlib64
