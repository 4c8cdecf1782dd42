// The geometry of a pattern: pure values in millimetres, produced once and handed to every output. It says
// nothing of pages, pixels or files.
//
// Coordinates: the origin is the top-left corner of the outer size, x runs to the right and y down, as seen
// on the printed side. Everything lies within the outer size; the quiet zone around it is light.
//
// Dark is what lies within an odd number of shapes. So a shape inside another one cuts a hole, a mark in a
// square is one more shape whatever the square's colour, and no two shapes have to share an edge for a
// picture without seams: an output makes one path of all shapes and fills it once by the even-odd rule.
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

// The points a camera measures: inner corners of a checkerboard, centres of a plate's round marks.
struct Lattice {
    int columns = 0;
    int rows = 0;
    double pitch = 0.0;
    Point first;  // the top-left point, index (0, 0)

    Point at(int column, int row) const { return {first.x + column * pitch, first.y + row * pitch}; }

    // The point that lies at the pattern's offset: the middle one, of an even count the one before the middle.
    int referenceColumn() const { return (columns - 1) / 2; }
    int referenceRow() const { return (rows - 1) / 2; }
};

struct PatternGeometry {
    double width = 0.0;  // outer size
    double height = 0.0;
    double quietZone = 0.0;   // width of the light border around the outer size
    double squareSide = 0.0;  // half the grid spacing
    Lattice lattice;
    std::vector<Rectangle> rectangles;
    std::vector<Circle> circles;
    std::vector<Polygon> polygons;
};

// The shapes of a checked description. A grid spacing of 0 gives a geometry of size 0.
PatternGeometry geometryOf(const PatternDescription &description);

}  // namespace lmlib64
