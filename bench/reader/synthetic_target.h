// Tells the synthetic camera how much ink a small piece of a flat target carries. The target has the shapes that
// LmLib64 prints, or is a checkerboard with marks of the caller's choice (CheckerTarget).
//
// The unit of length is one lattice pitch. On a checkerboard, this is the side of a square; on a plate, it is half the
// grid spacing. The origin is the pattern's top-left outer corner, x to the right, y down. Ink is 1 where the paper is
// fully inked and 0 where it has no ink; the camera converts it to grey levels.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "bench/reader/area_coverage.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace reader_bench {

// How the printer renders the shapes. Lengths are in pitches.
struct Print {
    double inkSpread = 0;       // how far the edges of dark shapes move outwards; negative if they move inwards
    double halftonePeriod = 0;  // period of the halftone screen; 0 if there is no screen
    double halftoneDepth = 0;   // the share of the ink that is missing between the screen's dots
    double halftoneAngle = 0;   // radians
};

class SyntheticTarget {
public:
    explicit SyntheticTarget(const lmlib64::PatternGeometry &geometry, const Print &print = {});

    // Returns the inked share, 0 to 1, of the quadrilateral's area. The quadrilateral must be smaller than a few
    // pitches. There is no ink outside the pattern.
    double inkShare(const Quad &quad) const;
    // Outer size of the pattern in pitches.
    cv::Size2d size() const { return outerSize; }
    const Print &print() const { return printForm; }
    // The points that a reader should find: inner corners or mark centres.
    const std::vector<cv::Point2d> &points() const { return pointPlaces; }

private:
    enum class Form { Rectangle, Circle, Polygon };
    // A shape that adds ink (weight 1) or takes ink away (weight -1). A light shape within a dark one takes ink away.
    // So does the overlap of two dark squares whose edges have moved outwards, because its ink must count only once.
    struct Shape {
        Form form = Form::Rectangle;
        double weight = 1;
        cv::Rect2d bounds;
        std::vector<cv::Point2d> polygon;
    };
    // A small square of the target: the shapes that reach into it, and its ink if that is uniform.
    struct Cell {
        size_t firstShape = 0;
        size_t shapeCount = 0;
        float ink = -1;  // negative if it is not uniform
    };

    static int cellIndex(double coordinate);
    size_t cellNumber(int column, int row) const;
    static bool holds(const Shape &outer, const Shape &inner);
    static double areaWithin(const Quad &quad, const Shape &shape);
    template <typename Visit>
    void visitCells(const cv::Rect2d &bounds, const Visit &visit) const;
    void addShapes(const lmlib64::PatternGeometry &geometry);
    void weighShapes();
    void spreadInk(const std::vector<cv::Point2d> &squareCorners);
    void fillCells();
    void findEvenCells();
    double mixedShare(const Quad &quad, const cv::Rect2d &bounds) const;
    double screen(const Quad &quad) const;

    cv::Size2d outerSize;
    std::vector<cv::Point2d> pointPlaces;
    Print printForm;
    std::vector<Shape> shapes;
    cv::Size cellCount;
    std::vector<Cell> cells;
    std::vector<size_t> cellShapes;
};

// A checkerboard whose squares may carry a mark: a square of the opposite colour in the centre, with sides a third as
// long.
class CheckerTarget : public SyntheticTarget {
public:
    // `marks` has one value for each of the columns × rows squares, row by row: 1 if the square carries a mark, 0 if
    // not. It may be empty if no square carries a mark. If `darkFirst` is true, the top-left square is inked.
    CheckerTarget(int columns, int rows, const std::vector<int> &marks, bool darkFirst, const Print &print = {});
};

}  // namespace reader_bench
