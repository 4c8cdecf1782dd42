#include "camera_library/output/cairo_drawing.h"

#include <stdexcept>
#include <string>

namespace lmlib64 {

namespace {

// How far a curve may be off, in pixels or page units. Cairo's own choice leaves a mark visibly too small.
constexpr double curveTolerance = 0.03;
constexpr double fullTurn = 6.283185307179586;

void addPolygon(cairo_t *context, const Polygon &polygon) {
    for (const Point &corner : polygon) {
        cairo_line_to(context, corner.x, corner.y);
    }
    cairo_close_path(context);
}

}  // namespace

void fillDarkShapes(cairo_t *context, const PatternGeometry &geometry) {
    cairo_set_tolerance(context, curveTolerance);
    cairo_new_path(context);
    for (const Rectangle &rectangle : geometry.rectangles) {
        // Corner by corner, not by width and height: neighbours then meet in the same rounded coordinate.
        cairo_move_to(context, rectangle.left, rectangle.top);
        cairo_line_to(context, rectangle.right, rectangle.top);
        cairo_line_to(context, rectangle.right, rectangle.bottom);
        cairo_line_to(context, rectangle.left, rectangle.bottom);
        cairo_close_path(context);
    }
    for (const Polygon &polygon : geometry.polygons) {
        cairo_new_sub_path(context);
        addPolygon(context, polygon);
    }
    for (const Circle &circle : geometry.circles) {
        cairo_new_sub_path(context);
        cairo_arc(context, circle.centre.x, circle.centre.y, circle.radius, 0.0, fullTurn);
        cairo_close_path(context);
    }
    cairo_set_fill_rule(context, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_fill(context);
}

void checkCairo(cairo_status_t status) {
    if (status != CAIRO_STATUS_SUCCESS) {
        throw std::runtime_error(std::string("Drawing failed: ") + cairo_status_to_string(status));
    }
}

}  // namespace lmlib64
