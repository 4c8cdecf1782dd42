// The geometry of a pattern: its shapes as plain values in millimetres. The geometry is made once and passed to every
// output. It does not depend on pages, pixels or files.
//
// Coordinates: the origin is the top-left corner of the outer size, x runs to the right and y down, as seen on the
// printed side. All shapes lie within the outer size; the quiet zone around it is light.
//
// A point is dark if it lies within an odd number of shapes. So a shape inside another one cuts a hole. A mark is
// always an additional shape: in a light square it appears dark, and in a dark square it is a hole and appears light.
// An output fills one path of all shapes by the even-odd rule, so it need not divide dark areas with holes into pieces
// with visible seams. Shapes may touch but do not cross. shape_nesting.h finds the shapes that are holes.
#pragma once

#include <vector>

#include "camera_library/pattern/pattern_description.h"

namespace lmlib64 {

struct Point {
    double x = 0.0;
    double y = 0.0;
};

struct Rectangle {
    double left = 0.0;
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;
};

struct Circle {
    Point centre;
    double radius = 0.0;
};

using Polygon = std::vector<Point>;

// The points that a camera measures: inner corners of a checkerboard, centres of round marks.
struct Lattice {
    int columns = 0;
    int rows = 0;
    double pitch = 0.0;
    Point first;  // the top-left point, index (0, 0)

    Point at(int column, int row) const { return {first.x + column * pitch, first.y + row * pitch}; }

    // Return the column and the row of the reference point, which lies at the offset of the pattern. It is the middle
    // point. If the number of columns or rows is even, it is the one just before the middle.
    int referenceColumn() const { return (columns - 1) / 2; }
    int referenceRow() const { return (rows - 1) / 2; }
};

struct PatternGeometry {
    double width = 0.0;  // outer size
    double height = 0.0;
    double quietZone = 0.0;   // width of the light border around the outer size
    double squareSide = 0.0;  // half the grid spacing
    Lattice lattice;
    // A cut into sheets runs between squares or marks: exactly this distance to the right of a column of the lattice,
    // or below a row of it. Here, the lattice counts as having one more column to the left of the first and one more
    // row above the first.
    double cutDistance = 0.0;
    std::vector<Rectangle> rectangles;
    std::vector<Circle> circles;
    std::vector<Polygon> polygons;
};

// Returns the geometry with only the part of its shapes that is within the window. The window is in the same
// coordinates as the shapes. Circles that the window cuts become polygons that deviate from them by at most 0.2 um. The
// other members of the geometry, such as its size, are copied unchanged.
PatternGeometry clippedTo(const Rectangle &window, const PatternGeometry &geometry);

// Returns the corners of the regular polygon that is drawn instead of a circle of this radius around the origin. It has
// the area of the circle, and its outline is at most `tolerance` away from the circle.
Polygon polygonOfCircle(double radius, double tolerance);

// Returns the shapes of a checked description. A grid spacing of 0 gives a geometry of size 0.
PatternGeometry geometryOf(const PatternDescription &description);

}  // namespace lmlib64
