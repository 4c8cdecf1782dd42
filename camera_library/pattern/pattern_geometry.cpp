#include "camera_library/pattern/pattern_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "camera_library/pattern/code_cells.h"

namespace lmlib64 {

namespace {

// One side of a window. A polygon is clipped at all four sides, one after the other.
struct Side {
    double Point::*coordinate;
    double limit;
    bool isUpperLimit;

    double inside(const Point &point) const {
        return isUpperLimit ? limit - point.*coordinate : point.*coordinate - limit;
    }
};

Polygon clippedAt(const Side &side, const Polygon &polygon) {
    Polygon result;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point &from = polygon[i];
        const Point &to = polygon[(i + 1) % polygon.size()];
        const double start = side.inside(from);
        const double end = side.inside(to);
        if (start >= 0.0) {
            result.push_back(from);
        }
        if ((start > 0.0 && end < 0.0) || (start < 0.0 && end > 0.0)) {
            const double share = start / (start - end);
            Point &crossing =
                result.emplace_back(Point{from.x + share * (to.x - from.x), from.y + share * (to.y - from.y)});
            crossing.*side.coordinate = side.limit;
        }
    }
    return result;
}

bool isWithin(const Point &point, const Rectangle &window) {
    return point.x > window.left && point.x < window.right && point.y > window.top && point.y < window.bottom;
}

// Returns the part of the polygon that is within the window. The result starts at a corner that was within the window
// before clipping, if there is one. holesOf tests the first corner to find out which other shapes the polygon lies in.
// A corner on the window's edge would not show this, because the outlines of clipped shapes coincide there.
Polygon clippedTo(const Rectangle &window, Polygon polygon) {
    const auto inside =
        std::find_if(polygon.begin(), polygon.end(), [&](const Point &corner) { return isWithin(corner, window); });
    if (inside != polygon.end()) {
        std::rotate(polygon.begin(), inside, polygon.end());
    }
    for (const Side &side : {Side{&Point::x, window.left, false}, Side{&Point::x, window.right, true},
                             Side{&Point::y, window.top, false}, Side{&Point::y, window.bottom, true}}) {
        polygon = clippedAt(side, polygon);
    }
    return polygon;
}

void addClipped(const Rectangle &window, const Circle &circle, PatternGeometry &result) {
    const auto [x, y] = circle.centre;
    const double r = circle.radius;
    if (x + r <= window.left || x - r >= window.right || y + r <= window.top || y - r >= window.bottom) {
        return;
    }
    if (x - r >= window.left && x + r <= window.right && y - r >= window.top && y + r <= window.bottom) {
        result.circles.push_back(circle);
        return;
    }
    constexpr double tolerance = 0.0002;  // mm
    Polygon polygon = polygonOfCircle(r, tolerance);
    for (Point &corner : polygon) {
        corner = {x + corner.x, y + corner.y};
    }
    polygon = clippedTo(window, std::move(polygon));
    if (polygon.size() > 2) {
        result.polygons.push_back(std::move(polygon));
    }
}

}  // namespace

PatternGeometry clippedTo(const Rectangle &window, const PatternGeometry &geometry) {
    PatternGeometry result;
    result.width = geometry.width;
    result.height = geometry.height;
    result.quietZone = geometry.quietZone;
    result.squareSide = geometry.squareSide;
    result.lattice = geometry.lattice;
    result.cutDistance = geometry.cutDistance;
    for (const Rectangle &shape : geometry.rectangles) {
        const Rectangle part{std::max(shape.left, window.left), std::max(shape.top, window.top),
                             std::min(shape.right, window.right), std::min(shape.bottom, window.bottom)};
        if (part.left < part.right && part.top < part.bottom) {
            result.rectangles.push_back(part);
        }
    }
    for (const Polygon &polygon : geometry.polygons) {
        if (Polygon part = clippedTo(window, polygon); part.size() > 2) {
            result.polygons.push_back(std::move(part));
        }
    }
    for (const Circle &circle : geometry.circles) {
        addClipped(window, circle, result);
    }
    return result;
}

Polygon polygonOfCircle(double radius, double tolerance) {
    constexpr double pi = 3.141592653589793;
    // In units of the tolerance. A circle with a smaller radius gets the number of corners of a circle with this
    // radius.
    constexpr double leastRadius = 10.0 / 3.0;
    const double share = 1.0 / std::max(radius / tolerance, leastRadius);
    const auto count = static_cast<int>(std::ceil(pi / std::acos(1.0 - share)));
    const double step = 2.0 * pi / count;
    const double distance = radius * std::sqrt(step / std::sin(step));
    Polygon corners;
    corners.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        corners.push_back({distance * std::cos(i * step), distance * std::sin(i * step)});
    }
    return corners;
}

PatternGeometry geometryOf(const PatternDescription &description) {
    const std::optional<CodeCells> code = codeCellsOf(description);
    return description.type->draw(description, code ? &*code : nullptr);
}

}  // namespace lmlib64
