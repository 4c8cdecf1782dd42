#include "camera_library/pattern/shape_nesting.h"

#include <algorithm>
#include <cstddef>

namespace lmlib64 {

namespace {

// A shape of any kind. `circle` or `polygon` points to the shape. If both are null, the shape is a rectangle and equals
// `extent`.
struct Shape {
    Rectangle extent;
    Point ownPoint;  // within the shape or on its outline
    const Circle *circle = nullptr;
    const Polygon *polygon = nullptr;
    std::size_t place = 0;  // index in the result
};

bool isWithin(const Rectangle &inner, const Rectangle &outer) {
    return inner.left >= outer.left && inner.right <= outer.right && inner.top >= outer.top &&
           inner.bottom <= outer.bottom;
}

bool isWithin(Point point, const Circle &circle) {
    const double x = point.x - circle.centre.x;
    const double y = point.y - circle.centre.y;
    return x * x + y * y <= circle.radius * circle.radius;
}

bool isWithin(Point point, const Polygon &polygon) {
    bool isInside = false;
    Point from = polygon.back();
    for (const Point &to : polygon) {
        if ((from.y <= point.y) != (to.y <= point.y) &&
            point.x < from.x + (point.y - from.y) * (to.x - from.x) / (to.y - from.y)) {
            isInside = !isInside;
        }
        from = to;
    }
    return isInside;
}

// Outlines do not cross. So the inner shape lies within the outer shape if its extent lies within the outer extent and
// one of its points lies within the outer shape.
bool isWithin(const Shape &inner, const Shape &outer) {
    return isWithin(inner.extent, outer.extent) &&
           (outer.circle == nullptr || isWithin(inner.ownPoint, *outer.circle)) &&
           (outer.polygon == nullptr || isWithin(inner.ownPoint, *outer.polygon));
}

Rectangle extentOf(const Circle &circle) {
    return {circle.centre.x - circle.radius, circle.centre.y - circle.radius, circle.centre.x + circle.radius,
            circle.centre.y + circle.radius};
}

Rectangle extentOf(const Polygon &polygon) {
    Rectangle extent{polygon.front().x, polygon.front().y, polygon.front().x, polygon.front().y};
    for (const Point &corner : polygon) {
        extent = {std::min(extent.left, corner.x), std::min(extent.top, corner.y), std::max(extent.right, corner.x),
                  std::max(extent.bottom, corner.y)};
    }
    return extent;
}

std::vector<Shape> shapesOf(const PatternGeometry &geometry) {
    std::vector<Shape> shapes;
    shapes.reserve(geometry.rectangles.size() + geometry.polygons.size() + geometry.circles.size());
    for (const Rectangle &rectangle : geometry.rectangles) {
        shapes.push_back({rectangle, {rectangle.left, rectangle.top}, nullptr, nullptr, shapes.size()});
    }
    for (const Polygon &polygon : geometry.polygons) {
        shapes.push_back({extentOf(polygon), polygon.front(), nullptr, &polygon, shapes.size()});
    }
    for (const Circle &circle : geometry.circles) {
        shapes.push_back({extentOf(circle), circle.centre, &circle, nullptr, shapes.size()});
    }
    return shapes;
}

// A shape comes before all shapes that lie within it. Of equal shapes, the first counts as lying around the others.
bool comesBefore(const Shape &a, const Shape &b) {
    return a.extent.top != b.extent.top         ? a.extent.top < b.extent.top
           : a.extent.bottom != b.extent.bottom ? a.extent.bottom > b.extent.bottom
           : a.extent.left != b.extent.left     ? a.extent.left < b.extent.left
           : a.extent.right != b.extent.right   ? a.extent.right > b.extent.right
                                                : a.place < b.place;
}

}  // namespace

std::vector<bool> holesOf(const PatternGeometry &geometry) {
    std::vector<Shape> shapes = shapesOf(geometry);
    std::sort(shapes.begin(), shapes.end(), comesBefore);
    std::vector<bool> isHole(shapes.size());
    std::vector<const Shape *> candidates;  // the earlier shapes that reach down to the current one's top
    for (const Shape &shape : shapes) {
        const auto endsAbove = [&](const Shape *other) { return other->extent.bottom < shape.extent.top; };
        candidates.erase(std::remove_if(candidates.begin(), candidates.end(), endsAbove), candidates.end());
        const auto around = std::count_if(candidates.begin(), candidates.end(),
                                          [&](const Shape *other) { return isWithin(shape, *other); });
        isHole[shape.place] = around % 2 != 0;
        candidates.push_back(&shape);
    }
    return isHole;
}

}  // namespace lmlib64
