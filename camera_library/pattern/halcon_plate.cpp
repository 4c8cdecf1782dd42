#include "camera_library/pattern/halcon_plate.h"

namespace lmlib64 {

namespace {

// Returns the light area inside the frame. The top-left corner of this area is cut off to leave room for the dark
// triangle, so that triangle and frame are one dark shape without an edge between them.
Polygon insideOfFrame(double outerSize, double frameWidth, double triangleLeg) {
    const double near = frameWidth;
    const double far = outerSize - frameWidth;
    return {{near + triangleLeg, near}, {far, near}, {far, far}, {near, far}, {near, near + triangleLeg}};
}

// Adds the dots, which are rings: the inner circle cuts a hole.
void addDots(PatternGeometry &geometry, double gridSpacing, const CodeCells &code) {
    for (int bit = 0; bit < pattern_code::blockBitCount; ++bit) {
        const pattern_code::BlockCell cell = pattern_code::blockCell(bit);
        if (code.at(cell.column, cell.row)) {
            const pattern_code::DotPosition at = pattern_code::dotPosition(bit);
            const Point centre{at.x * gridSpacing, at.y * gridSpacing};
            geometry.circles.push_back({centre, pattern_code::dotRadius * gridSpacing});
            geometry.circles.push_back({centre, pattern_code::dotHoleRadius * gridSpacing});
        }
    }
}

}  // namespace

PatternGeometry halconPlate(double gridSpacing, bool polarity, const CodeCells *code) {
    const double outerSize = 8.0 * gridSpacing;

    PatternGeometry geometry;
    geometry.width = outerSize;
    geometry.height = outerSize;
    geometry.squareSide = gridSpacing / 2.0;
    geometry.quietZone = geometry.squareSide;
    geometry.lattice = {halconMarksPerSide, halconMarksPerSide, gridSpacing, {gridSpacing, gridSpacing}};
    constexpr double cutDistance = 0.3;  // in grid spacings from a mark's centre; marks end at 0.25, dots begin at 0.35
    geometry.cutDistance = cutDistance * gridSpacing;
    if (gridSpacing <= 0.0) {
        return geometry;
    }
    // A point is dark if an odd number of shapes contain it. The first shape is the whole plate; the next shape makes
    // the plate light inside the frame. If `polarity` is false, dark and light are exchanged on the whole plate. A
    // second shape of the plate's size would do this, but two such shapes cancel each other. So both are left out.
    if (polarity) {
        geometry.rectangles.push_back({0.0, 0.0, outerSize, outerSize});
    }
    geometry.polygons.push_back(insideOfFrame(outerSize, gridSpacing / 4.0, gridSpacing * 0.75));
    for (int row = 0; row < halconMarksPerSide; ++row) {
        for (int column = 0; column < halconMarksPerSide; ++column) {
            geometry.circles.push_back({geometry.lattice.at(column, row), gridSpacing / 4.0});
        }
    }
    if (code != nullptr) {
        addDots(geometry, gridSpacing, *code);
    }
    return geometry;
}

}  // namespace lmlib64
