#include "camera_library/pattern/checkerboard.h"

#include <cstddef>

namespace lmlib64 {

PatternGeometry checkerboard(std::array<int, 2> innerCorners, double gridSpacing, bool polarity,
                             const CodeCells *code) {
    const double side = gridSpacing / 2.0;
    const int columns = innerCorners[0] + 1;
    const int rows = innerCorners[1] + 1;

    PatternGeometry geometry;
    geometry.width = columns * side;
    geometry.height = rows * side;
    geometry.quietZone = side;
    geometry.squareSide = side;
    geometry.lattice = {innerCorners[0], innerCorners[1], side, {side, side}};
    if (side <= 0.0) {
        return geometry;
    }
    // There is about one rectangle per square: half of the squares are dark, and half of all squares, dark or light,
    // carry a mark. Space for a quarter more is reserved.
    geometry.rectangles.reserve(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows) * 5 / 4 + 1);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const bool isDark = ((column + row) % 2 == 0) == polarity;
            if (isDark) {
                // Coordinates are products, never sums, so that neighbouring squares share exactly the same numbers.
                geometry.rectangles.push_back({column * side, row * side, (column + 1) * side, (row + 1) * side});
            }
        }
        // The marks follow the squares of the row, so that the rectangles stay sorted by their tops.
        for (int column = 0; code != nullptr && column < columns; ++column) {
            if (code->at(column, row)) {
                geometry.rectangles.push_back({(3 * column + 1) * side / 3.0, (3 * row + 1) * side / 3.0,
                                               (3 * column + 2) * side / 3.0, (3 * row + 2) * side / 3.0});
            }
        }
    }
    return geometry;
}

}  // namespace lmlib64
