#include "bench/reader/unrelated_targets.h"

#include <vector>

namespace reader_bench {

namespace {

lmlib64::PatternGeometry emptyGeometry(double width, double height) {
    lmlib64::PatternGeometry geometry;
    geometry.width = width;
    geometry.height = height;
    geometry.squareSide = 1;
    return geometry;
}

}  // namespace

Target makeBoard(bool marked, Dice &dice) {
    const int columns = dice.whole(6, 40);
    const int rows = dice.whole(6, 40);
    std::vector<int> marks;
    marks.reserve(size_t(columns) * size_t(rows));
    for (int i = 0; i < columns * rows; i++) {
        marks.push_back(marked ? dice.whole(0, 1) : 0);
    }
    return std::make_shared<CheckerTarget>(columns, rows, marks, dice.chance(0.5));
}

Target makePerforatedSheet(int most, Dice &dice) {
    const int columns = dice.whole(6, most);
    const int rows = dice.whole(6, most);
    lmlib64::PatternGeometry geometry = emptyGeometry(columns + 0.5, rows);
    const double radius = dice.real(0.2, 0.45);
    const bool shifted = dice.chance(0.5);
    if (dice.chance(0.5)) {
        // A dark sheet, so that the holes are light.
        geometry.rectangles.push_back({0, 0, geometry.width, geometry.height});
    }
    for (int row = 0; row < rows; row++) {
        for (int column = 0; column < columns; column++) {
            const double shift = shifted && row % 2 != 0 ? 1.0 : 0.5;
            geometry.circles.push_back({{column + shift, row + 0.5}, radius});
        }
    }
    return std::make_shared<SyntheticTarget>(geometry);
}

Target makeNet(int most, Dice &dice) {
    const int columns = dice.whole(6, most);
    const int rows = dice.whole(6, most);
    const double bar = dice.real(0.1, 0.6);
    lmlib64::PatternGeometry geometry = emptyGeometry(columns + bar, rows + bar);
    geometry.rectangles.push_back({0, 0, geometry.width, geometry.height});
    for (int row = 0; row < rows; row++) {
        for (int column = 0; column < columns; column++) {
            geometry.rectangles.push_back({column + bar, row + bar, column + 1.0, row + 1.0});
        }
    }
    return std::make_shared<SyntheticTarget>(geometry);
}

Target makeMarkGrid(Dice &dice) {
    const bool seven = dice.chance(0.5);
    const int columns = seven ? 7 : dice.whole(3, 14);
    const int rows = seven ? 7 : dice.whole(3, 14);
    lmlib64::PatternGeometry geometry = emptyGeometry(2 * columns + 2, 2 * rows + 2);
    if (dice.chance(0.6)) {
        const double frame = dice.real(0.3, 0.7);
        geometry.rectangles.push_back({0, 0, geometry.width, geometry.height});
        geometry.rectangles.push_back({frame, frame, geometry.width - frame, geometry.height - frame});
    }
    const double radius = dice.real(0.35, 0.65);
    for (int row = 1; row <= rows; row++) {
        for (int column = 1; column <= columns; column++) {
            geometry.circles.push_back({{2.0 * column, 2.0 * row}, radius});
        }
    }
    return std::make_shared<SyntheticTarget>(geometry);
}

Target makeModules(Dice &dice) {
    const int side = dice.whole(12, 60);
    lmlib64::PatternGeometry geometry = emptyGeometry(side, side);
    for (int row = 0; row < side; row++) {
        for (int column = 0; column < side; column++) {
            if (dice.chance(0.5)) {
                geometry.rectangles.push_back({double(column), double(row), column + 1.0, row + 1.0});
            }
        }
    }
    return std::make_shared<SyntheticTarget>(geometry);
}

}  // namespace reader_bench
