#include "camera_library/output/pixel_outlines.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <vector>

#include "camera_library/pattern/shape_nesting.h"

namespace lmlib64 {

namespace {

// True if the polygon runs clockwise as seen in the picture, where y runs down.
bool isClockwise(const Polygon &polygon) {
    double twiceArea = 0.0;
    Point from = polygon.back();
    for (const Point &to : polygon) {
        twiceArea += from.x * to.y - to.x * from.y;
        from = to;
    }
    return twiceArea > 0.0;
}

void addCircles(const std::vector<Circle> &circles, const PixelScale &scale, PixelOutlines &outlines) {
    constexpr double tolerancePixels = 0.03;
    const double pixelsPerMm = std::max(scale.pixelsPerMm().x, scale.pixelsPerMm().y);
    std::map<double, Polygon> cornersByRadius;  // a plate has three sizes of circles, and many of each
    for (const Circle &circle : circles) {
        Polygon &corners = cornersByRadius[circle.radius];
        if (corners.empty()) {
            corners = polygonOfCircle(circle.radius, tolerancePixels / pixelsPerMm);
        }
        for (const Point &corner : corners) {
            outlines.points.push_back(scale.point(circle.centre.x + corner.x, circle.centre.y + corner.y));
        }
        outlines.close();
    }
}

void reverseOutline(PixelOutlines &outlines, std::size_t index) {
    const auto first = outlines.points.begin();
    const std::size_t start = index == 0 ? 0 : outlines.ends[index - 1];
    std::reverse(first + static_cast<std::ptrdiff_t>(start), first + static_cast<std::ptrdiff_t>(outlines.ends[index]));
}

// Returns the outlines of all shapes, in the same order as holesOf(): rectangles, polygons, circles. All outlines run
// clockwise; the polygons of a geometry, which may have either direction, are reversed if necessary.
PixelOutlines clockwiseOutlines(const PatternGeometry &geometry, const PixelScale &scale) {
    PixelOutlines outlines;
    outlines.ends.reserve(geometry.rectangles.size() + geometry.polygons.size() + geometry.circles.size());
    outlines.points.reserve(geometry.rectangles.size() * 4);
    for (const Rectangle &r : geometry.rectangles) {
        outlines.points.insert(outlines.points.end(), {scale.point(r.left, r.top), scale.point(r.right, r.top),
                                                       scale.point(r.right, r.bottom), scale.point(r.left, r.bottom)});
        outlines.close();
    }
    for (const Polygon &polygon : geometry.polygons) {
        for (const Point &corner : polygon) {
            outlines.points.push_back(scale.point(corner.x, corner.y));
        }
        outlines.close();
        if (!isClockwise(polygon)) {
            reverseOutline(outlines, outlines.ends.size() - 1);
        }
    }
    addCircles(geometry.circles, scale, outlines);
    return outlines;
}

}  // namespace

PixelOutlines pixelOutlines(const PatternGeometry &geometry, const PixelScale &scale) {
    PixelOutlines outlines = clockwiseOutlines(geometry, scale);
    const std::vector<bool> isHole = holesOf(geometry);
    for (std::size_t i = 0; i < outlines.ends.size(); ++i) {
        if (isHole[i]) {
            reverseOutline(outlines, i);
        }
    }
    return outlines;
}

}  // namespace lmlib64
