#include "bench/reader/synthetic_target.h"

#include <algorithm>
#include <cmath>

#include "camera_library/pattern/checkerboard.h"
#include "camera_library/pattern/code_cells.h"

namespace reader_bench {

namespace {

// The target is divided into cells. The marks on a square of the checkerboard begin and end at thirds of its side, so
// with three cells per pitch, the ink is uniform in most cells.
constexpr int cellsPerPitch = 3;
// The cells extend beyond the pattern's outer size by this number of pitches, because ink may spread beyond it.
constexpr double margin = 1;

cv::Rect2d grown(const cv::Rect2d &rect, double by) {
    return {rect.x - by, rect.y - by, rect.width + 2 * by, rect.height + 2 * by};
}

cv::Point2d middleOf(const cv::Rect2d &rect) {
    return (rect.tl() + rect.br()) / 2;
}

template <typename Points>
cv::Rect2d boundsOf(const Points &points) {
    cv::Point2d least = points[0];
    cv::Point2d greatest = points[0];
    for (const cv::Point2d &p : points) {
        least = {std::min(least.x, p.x), std::min(least.y, p.y)};
        greatest = {std::max(greatest.x, p.x), std::max(greatest.y, p.y)};
    }
    return {least.x, least.y, greatest.x - least.x, greatest.y - least.y};
}

// True if a point is inside a convex polygon, whose corners may run clockwise or counter-clockwise.
bool isInside(const cv::Point2d &p, const std::vector<cv::Point2d> &polygon) {
    size_t left = 0;
    for (size_t i = 0; i < polygon.size(); i++) {
        const cv::Point2d &a = polygon[i];
        left += (polygon[(i + 1) % polygon.size()] - a).cross(p - a) > 0 ? 1U : 0U;
    }
    return left == 0 || left == polygon.size();
}

// Returns the polygon with each side moved outwards by `spread`.
std::vector<cv::Point2d> spreadPolygon(const std::vector<cv::Point2d> &polygon, double spread) {
    const size_t n = polygon.size();
    double area = 0;
    for (size_t i = 0; i < n; i++) {
        area += polygon[i].cross(polygon[(i + 1) % n]);
    }
    const double outwards = area > 0 ? spread : -spread;
    std::vector<cv::Point2d> result;
    for (size_t i = 0; i < n; i++) {
        const cv::Point2d before = polygon[i] - polygon[(i + n - 1) % n];
        const cv::Point2d after = polygon[(i + 1) % n] - polygon[i];
        const cv::Point2d a = cv::Point2d(before.y, -before.x) / std::hypot(before.x, before.y);
        const cv::Point2d b = cv::Point2d(after.y, -after.x) / std::hypot(after.x, after.y);
        result.push_back(polygon[i] + (a + b) * (outwards / (1 + a.dot(b))));
    }
    return result;
}

lmlib64::PatternGeometry checkerGeometry(int columns, int rows, const std::vector<int> &marks, bool darkFirst) {
    lmlib64::CodeCells code;
    code.columns = columns;
    code.rows = rows;
    code.cells.assign(marks.begin(), marks.end());
    return lmlib64::checkerboard({columns - 1, rows - 1}, 2.0, darkFirst, marks.empty() ? nullptr : &code);
}

}  // namespace

SyntheticTarget::SyntheticTarget(const lmlib64::PatternGeometry &geometry, const Print &print) : printForm(print) {
    const double pitch = geometry.squareSide;
    outerSize = {geometry.width / pitch, geometry.height / pitch};
    for (int row = 0; row < geometry.lattice.rows; row++) {
        for (int column = 0; column < geometry.lattice.columns; column++) {
            const lmlib64::Point p = geometry.lattice.at(column, row);
            pointPlaces.emplace_back(p.x / pitch, p.y / pitch);
        }
    }
    addShapes(geometry);
    fillCells();
    weighShapes();
    if (print.inkSpread != 0) {
        spreadInk(geometry.circles.empty() ? pointPlaces : std::vector<cv::Point2d>());
        fillCells();
    }
    findEvenCells();
}

void SyntheticTarget::addShapes(const lmlib64::PatternGeometry &geometry) {
    const double scale = 1 / geometry.squareSide;
    const auto scaled = [&](const lmlib64::Point &p) { return cv::Point2d(p.x * scale, p.y * scale); };
    for (const lmlib64::Rectangle &r : geometry.rectangles) {
        shapes.push_back({Form::Rectangle, 1, cv::Rect2d(scaled({r.left, r.top}), scaled({r.right, r.bottom})), {}});
    }
    for (const lmlib64::Polygon &polygon : geometry.polygons) {
        Shape shape;
        shape.form = Form::Polygon;
        for (const lmlib64::Point &p : polygon) {
            shape.polygon.push_back(scaled(p));
        }
        shape.bounds = boundsOf(shape.polygon);
        shapes.push_back(shape);
    }
    for (const lmlib64::Circle &c : geometry.circles) {
        const double r = c.radius * scale;
        shapes.push_back(
            {Form::Circle, 1, cv::Rect2d(scaled(c.centre) - cv::Point2d(r, r), cv::Size2d(2 * r, 2 * r)), {}});
    }
}

bool SyntheticTarget::holds(const Shape &outer, const Shape &inner) {
    const cv::Rect2d common = outer.bounds & inner.bounds;
    if (outer.bounds.area() <= inner.bounds.area() || common.area() < inner.bounds.area() * (1 - 1e-9)) {
        return false;
    }
    return outer.form != Form::Polygon || isInside(middleOf(inner.bounds), outer.polygon);
}

// A point is dark if it lies within an odd number of shapes. Shapes are either separate or one is inside the other. So
// a shape adds ink (weight 1) if it lies within an even number of other shapes, and takes ink away (weight -1) if that
// number is odd.
void SyntheticTarget::weighShapes() {
    for (Shape &shape : shapes) {
        const cv::Point2d middle = middleOf(shape.bounds);
        const Cell &cell = cells[cellNumber(cellIndex(middle.x), cellIndex(middle.y))];
        for (size_t i = 0; i < cell.shapeCount; i++) {
            if (holds(shapes[cellShapes[cell.firstShape + i]], shape)) {
                shape.weight = -shape.weight;
            }
        }
    }
}

// Lets dark shapes grow and light ones shrink, or the other way round if the spread is negative. Two dark squares that
// touch at a corner overlap once they have grown. There, a shape of weight -1 is added, so that the ink of the overlap
// counts only once.
void SyntheticTarget::spreadInk(const std::vector<cv::Point2d> &squareCorners) {
    for (Shape &shape : shapes) {
        const double spread = printForm.inkSpread * shape.weight;
        shape.bounds = grown(shape.bounds, spread);
        if (shape.form == Form::Polygon) {
            shape.polygon = spreadPolygon(shape.polygon, spread);
        }
    }
    for (const cv::Point2d &p : squareCorners) {
        if (printForm.inkSpread > 0) {
            shapes.push_back({Form::Rectangle, -1, grown(cv::Rect2d(p, cv::Size2d()), printForm.inkSpread), {}});
        }
    }
}

size_t SyntheticTarget::cellNumber(int column, int row) const {
    return size_t(row) * size_t(cellCount.width) + size_t(column);
}

int SyntheticTarget::cellIndex(double coordinate) {
    return int(std::floor((coordinate + margin) * cellsPerPitch));
}

// Calls `visit` with every cell that a rectangle reaches into, until `visit` returns false.
template <typename Visit>
void SyntheticTarget::visitCells(const cv::Rect2d &bounds, const Visit &visit) const {
    // Many shapes end on the border of a cell. The slack keeps a rounding error from adding the cell behind the border.
    constexpr double slack = 1e-7;
    const int left = std::max(0, cellIndex(bounds.x + slack));
    const int top = std::max(0, cellIndex(bounds.y + slack));
    const int right = std::min(cellCount.width - 1, cellIndex(bounds.x + bounds.width - slack));
    const int bottom = std::min(cellCount.height - 1, cellIndex(bounds.y + bounds.height - slack));
    for (int row = top; row <= bottom; row++) {
        for (int column = left; column <= right; column++) {
            if (!visit(cellNumber(column, row))) {
                return;
            }
        }
    }
}

void SyntheticTarget::fillCells() {
    cellCount = {cellIndex(outerSize.width + margin) + 1, cellIndex(outerSize.height + margin) + 1};
    cells.assign(size_t(cellCount.width) * size_t(cellCount.height), Cell());
    for (const Shape &shape : shapes) {
        visitCells(shape.bounds, [&](size_t cell) {
            cells[cell].shapeCount++;
            return true;
        });
    }
    size_t first = 0;
    for (Cell &cell : cells) {
        cell.firstShape = first;
        first += cell.shapeCount;
        cell.shapeCount = 0;
    }
    cellShapes.resize(first);
    for (size_t i = 0; i < shapes.size(); i++) {
        visitCells(shapes[i].bounds, [&](size_t index) {
            Cell &cell = cells[index];
            cellShapes[cell.firstShape + cell.shapeCount++] = i;
            return true;
        });
    }
}

void SyntheticTarget::findEvenCells() {
    for (int row = 0; row < cellCount.height; row++) {
        for (int column = 0; column < cellCount.width; column++) {
            Cell &cell = cells[cellNumber(column, row)];
            const double side = 1.0 / cellsPerPitch;
            const double x = column * side - margin;
            const double y = row * side - margin;
            const Quad whole{{{x, y}, {x + side, y}, {x + side, y + side}, {x, y + side}}};
            double ink = 0;
            bool even = true;
            for (size_t i = 0; i < cell.shapeCount && even; i++) {
                const Shape &shape = shapes[cellShapes[cell.firstShape + i]];
                const double share = areaWithin(whole, shape) / (side * side);
                even = share < 1e-6 || share > 1 - 1e-6;
                ink += shape.weight * std::round(share);
            }
            cell.ink = even ? float(ink) : -1.0F;
        }
    }
}

double SyntheticTarget::areaWithin(const Quad &quad, const Shape &shape) {
    switch (shape.form) {
        case Form::Rectangle:
            return areaInRectangle(quad, shape.bounds);
        case Form::Circle:
            return areaInCircle(quad, middleOf(shape.bounds), shape.bounds.width / 2);
        case Form::Polygon:
            break;
    }
    return areaInPolygon(quad, shape.polygon);
}

double SyntheticTarget::inkShare(const Quad &quad) const {
    const cv::Rect2d bounds = boundsOf(quad);
    if (bounds.x + bounds.width <= -margin || bounds.y + bounds.height <= -margin ||
        bounds.x >= outerSize.width + margin || bounds.y >= outerSize.height + margin) {
        return 0;
    }
    // In most pixels the ink is uniform. This is assumed until a cell is found that is not uniform, or whose ink
    // differs from that of the cells before it.
    double ink = -1;
    bool even = cellIndex(bounds.x) >= 0 && cellIndex(bounds.y) >= 0 &&
                cellIndex(bounds.x + bounds.width) < cellCount.width &&
                cellIndex(bounds.y + bounds.height) < cellCount.height;
    if (even) {
        visitCells(bounds, [&](size_t index) {
            const Cell &cell = cells[index];
            even = cell.ink >= 0 && (ink < 0 || ink == cell.ink);
            ink = cell.ink;
            return even;
        });
    }
    if (!even) {
        ink = mixedShare(quad, bounds);
    }
    return printForm.halftonePeriod > 0 && ink > 0 ? ink * screen(quad) : ink;
}

double SyntheticTarget::mixedShare(const Quad &quad, const cv::Rect2d &bounds) const {
    constexpr int most = 64;
    std::array<size_t, most> seen;
    int seenCount = 0;
    double inked = 0;
    visitCells(bounds, [&](size_t index) {
        const Cell &cell = cells[index];
        for (size_t i = 0; i < cell.shapeCount; i++) {
            const size_t shape = cellShapes[cell.firstShape + i];
            if (seenCount < most &&
                std::find(seen.begin(), seen.begin() + seenCount, shape) == seen.begin() + seenCount) {
                seen[size_t(seenCount++)] = shape;
                inked += shapes[shape].weight * areaWithin(quad, shapes[shape]);
            }
        }
        return true;
    });
    const double area = areaOf(quad);
    return area > 0 ? std::clamp(inked / area, 0.0, 1.0) : 0;
}

// Returns the share of the ink that the halftone screen leaves. The screen has a wave along each of its two axes. The
// share is the average over the quadrilateral, which is treated as a parallelogram.
double SyntheticTarget::screen(const Quad &quad) const {
    const cv::Point2d middle = (quad[0] + quad[1] + quad[2] + quad[3]) / 4;
    const cv::Point2d across = (quad[1] - quad[0] + quad[2] - quad[3]) / 2;
    const cv::Point2d down = (quad[3] - quad[0] + quad[2] - quad[1]) / 2;
    const auto sinc = [](double x) { return std::abs(x) < 1e-6 ? 1.0 : std::sin(x) / x; };
    double waves = 0;
    for (const double angle : {printForm.halftoneAngle, printForm.halftoneAngle + CV_PI / 2}) {
        const cv::Point2d k = cv::Point2d(std::cos(angle), std::sin(angle)) * (2 * CV_PI / printForm.halftonePeriod);
        waves += std::cos(k.dot(middle)) * sinc(k.dot(across) / 2) * sinc(k.dot(down) / 2);
    }
    return 1 - printForm.halftoneDepth * (2 + waves) / 4;
}

CheckerTarget::CheckerTarget(int columns, int rows, const std::vector<int> &marks, bool darkFirst, const Print &print)
    : SyntheticTarget(checkerGeometry(columns, rows, marks, darkFirst), print) {}

}  // namespace reader_bench
