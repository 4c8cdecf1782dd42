#include "viewer/session/print_texture.h"

#include <algorithm>
#include <cmath>

#include "camera_library/pattern/code_cells.h"
#include "camera_library/pattern/pattern_geometry.h"

using calibration::Print;
using lmlib64::PatternDescription;
using lmlib64::PatternGeometry;
using pattern_reader::PatternKind;

namespace {

constexpr double leastTolerance = 0.02;  // allowed error of a circle's polygon, as a share of the radius
// Each cell extends beyond its edges by this share of the lattice's pitch. Without an overlap, the background would
// shine through the common edge of two cells.
constexpr double overlapShare = 0.02;
constexpr size_t blockLength = 8;  // greatest number of cells along a side of a block
// A shape is large if its bounding box has at least this share of the area of a cell.
constexpr double largeShare = 0.125;

// Returns the camera library's type of pattern for this look.
const lmlib64::PatternType *typeOf(const PrintLook &look) {
    switch (look.kind) {
        case PatternKind::Plane:
            return lmlib64::findPatternType("Flexible");
        case PatternKind::Tile:
            return lmlib64::findPatternType(look.tile > 0 ? "Assembly" : "SingleCustom");
        case PatternKind::Plate:
            return lmlib64::findPatternType(std::nullopt);
        case PatternKind::Board:
            break;
    }
    return lmlib64::findPatternType("SingleCustom");
}

size_t pointAt(const Print &print, int column, int row) {
    for (size_t i = 0; i < print.cells.size(); ++i) {
        if (print.cells[i] == Eigen::Vector2i(column, row)) {
            return i;
        }
    }
    return 0;
}

// Returns the description with which the camera library draws this print.
PatternDescription descriptionOf(const Print &print, const PrintLook &look) {
    Eigen::Vector2i last(0, 0);
    for (const Eigen::Vector2i &cell : print.cells) {
        last = last.cwiseMax(cell);
    }
    const double width = print.points[pointAt(print, last.x(), 0)].x() - print.points[pointAt(print, 0, 0)].x();
    const double pitch = last.x() > 0 ? width / last.x() : 0;
    PatternDescription description;
    description.type = typeOf(look);
    description.gridSize = {last.x() + 1, last.y() + 1};
    // Rounding removes the errors of the arithmetic. A code holds only whole hundredths of a mm, so with these errors,
    // encodingFault() below would refuse the spacing.
    constexpr double digits = 1e6;
    description.gridSpacing = std::round((look.kind == PatternKind::Plate ? pitch : 2 * pitch) * digits) / digits;
    description.polarity = look.isTopLeftSquareDark;
    description.isCoded = look.kind != PatternKind::Board;
    if (look.tile > 0) {
        description.assemblyNumber = look.tile - 1;
    }
    if (look.values) {
        description.thickness = look.values->thickness.value_or(0);
    }
    const Eigen::Vector2d &middle = print.points[pointAt(print, last.x() / 2, last.y() / 2)];
    if (look.kind == PatternKind::Plane || (look.values && look.values->offset)) {
        description.offset = {middle.x(), middle.y()};
    }
    if (lmlib64::encodingFault(description)) {
        description.isCoded = false;
    }
    return description;
}

// Returns the coordinates along one axis at which the pattern is cut into cells. The first and the last coordinate are
// the outer edges of the quiet zone. The others lie between the shapes.
std::vector<double> cutsOf(double size, double first, double pitch, double quietZone) {
    std::vector<double> cuts{-quietZone};
    const double tolerance = 1e-6 * size;
    for (int i = 0; first + i * pitch < size - tolerance; ++i) {
        const double cut = first + i * pitch;
        if (cut > tolerance) {
            cuts.push_back(cut);
        }
    }
    cuts.push_back(size + quietZone);
    return cuts;
}

// Returns all outlines within the window. The window and the outlines are in the geometry's coordinates.
std::vector<lmlib64::Polygon> polygonsIn(const lmlib64::Rectangle &window, const PatternGeometry &geometry) {
    const PatternGeometry part = lmlib64::clippedTo(window, geometry);
    std::vector<lmlib64::Polygon> polygons = part.polygons;
    for (const lmlib64::Rectangle &one : part.rectangles) {
        polygons.push_back(
            {{one.left, one.top}, {one.right, one.top}, {one.right, one.bottom}, {one.left, one.bottom}});
    }
    for (const lmlib64::Circle &circle : part.circles) {
        lmlib64::Polygon polygon = lmlib64::polygonOfCircle(circle.radius, leastTolerance * circle.radius);
        for (lmlib64::Point &corner : polygon) {
            corner = {corner.x + circle.centre.x, corner.y + circle.centre.y};
        }
        polygons.push_back(std::move(polygon));
    }
    return polygons;
}

bool isLarge(const lmlib64::Polygon &polygon, double pitch) {
    const auto byX = [](const lmlib64::Point &a, const lmlib64::Point &b) { return a.x < b.x; };
    const auto byY = [](const lmlib64::Point &a, const lmlib64::Point &b) { return a.y < b.y; };
    const auto [left, right] = std::minmax_element(polygon.begin(), polygon.end(), byX);
    const auto [top, bottom] = std::minmax_element(polygon.begin(), polygon.end(), byY);
    return (right->x - left->x) * (bottom->y - top->y) >= largeShare * pitch * pitch;
}

// Cuts a drawn pattern into cells and converts their outlines to the print's axes, with the size and the bend that the
// calibration found for this print (PrintShape).
class Cutter {
public:
    Cutter(const Print &print, const calibration::PrintShape &ownShape, const PatternGeometry &ownGeometry)
        : shape(ownShape),
          geometry(ownGeometry),
          shift(print.points[pointAt(print, 0, 0)] -
                Eigen::Vector2d(geometry.lattice.first.x, geometry.lattice.first.y)),
          overlap(overlapShare * geometry.lattice.pitch),
          across(cuts(geometry.width, geometry.lattice.first.x)),
          down(cuts(geometry.height, geometry.lattice.first.y)) {}

    std::vector<PrintBlock> blocks() const {
        std::vector<PrintBlock> made;
        for (size_t top = 0; top + 1 < down.size(); top += blockLength) {
            // Each row of blocks is cut out of the pattern first, and the blocks are then cut out of this row. A large
            // pattern has tens of thousands of shapes, so cutting every block out of the whole pattern would take long.
            const size_t bottom = std::min(top + blockLength, down.size() - 1);
            const PatternGeometry strip = lmlib64::clippedTo(window(0, across.size() - 1, top, bottom), geometry);
            for (size_t left = 0; left + 1 < across.size(); left += blockLength) {
                const size_t right = std::min(left + blockLength, across.size() - 1);
                made.push_back(blockAt(left, right, top, bottom, strip));
            }
        }
        return made;
    }

private:
    std::vector<double> cuts(double size, double first) const {
        return cutsOf(size, first + geometry.cutDistance - geometry.lattice.pitch, geometry.lattice.pitch,
                      geometry.quietZone);
    }

    // Returns the window between these cuts, with the overlap.
    lmlib64::Rectangle window(size_t left, size_t right, size_t top, size_t bottom) const {
        return {across[left] - overlap, down[top] - overlap, across[right] + overlap, down[bottom] + overlap};
    }

    Outline placed(const lmlib64::Polygon &polygon) const {
        Outline outline;
        for (const lmlib64::Point &corner : polygon) {
            const Eigen::Vector2d drawn = shift + Eigen::Vector2d(corner.x, corner.y);
            outline.push_back(calibration::printedPoint(shape.numbers.data(), shape.reach, drawn).place);
        }
        return outline;
    }

    Outline outlineOf(const lmlib64::Rectangle &window) const {
        return placed({{window.left, window.top},
                       {window.right, window.top},
                       {window.right, window.bottom},
                       {window.left, window.bottom}});
    }

    PrintBlock blockAt(size_t left, size_t right, size_t top, size_t bottom, const PatternGeometry &strip) const {
        const lmlib64::Rectangle place = window(left, right, top, bottom);
        const PatternGeometry part = lmlib64::clippedTo(place, strip);
        PrintBlock block;
        block.whole = outlineOf(place);
        for (const lmlib64::Polygon &polygon : polygonsIn(place, part)) {
            if (isLarge(polygon, geometry.lattice.pitch)) {
                block.largeShapes.push_back(placed(polygon));
            }
        }
        for (size_t row = top; row < bottom; ++row) {
            for (size_t column = left; column < right; ++column) {
                const lmlib64::Rectangle cellPlace = window(column, column + 1, row, row + 1);
                PrintCell cell;
                cell.whole = outlineOf(cellPlace);
                for (const lmlib64::Polygon &polygon : polygonsIn(cellPlace, part)) {
                    cell.shapes.push_back(placed(polygon));
                }
                block.cells.push_back(std::move(cell));
            }
        }
        return block;
    }

    const calibration::PrintShape &shape;
    const PatternGeometry &geometry;
    const Eigen::Vector2d shift;
    const double overlap;
    const std::vector<double> across;
    const std::vector<double> down;
};

}  // namespace

std::vector<PrintBlock> textureOf(const Print &print, const calibration::PrintShape &shape, const PrintLook &look) {
    if (print.cells.empty()) {
        return {};
    }
    const PatternDescription description = descriptionOf(print, look);
    if (!description.hasExtent()) {
        return {};
    }
    const PatternGeometry geometry = lmlib64::geometryOf(description);
    return Cutter(print, shape, geometry).blocks();
}
