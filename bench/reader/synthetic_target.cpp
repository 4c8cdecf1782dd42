#include "bench/reader/synthetic_target.h"

#include <cmath>
#include <utility>

namespace reader_bench {

namespace {

constexpr int plateCells = 16;

bool insideTriangle(const std::vector<cv::Point2d> &t, double x, double y) {
    int positive = 0;
    for (int i = 0; i < 3; i++) {
        const cv::Point2d a = t[size_t(i)];
        const cv::Point2d b = t[size_t((i + 1) % 3)];
        positive += (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x) >= 0 ? 1 : 0;
    }
    return positive == 0 || positive == 3;
}

}  // namespace

CheckerTarget::CheckerTarget(int columns, int rows, std::vector<int> marks, bool darkFirst)
    : columns_(columns), rows_(rows), marks_(std::move(marks)), darkFirst_(darkFirst) {}

float CheckerTarget::ink(double x, double y) const {
    if (x < 0 || y < 0 || x >= columns_ || y >= rows_) {
        return 0;
    }
    const int column = int(x);
    const int row = int(y);
    bool dark = ((column + row) % 2 == 0) == darkFirst_;
    if (marks_[size_t(row) * size_t(columns_) + size_t(column)] != 0 && std::abs(x - column - 0.5) < 1.0 / 6 &&
        std::abs(y - row - 0.5) < 1.0 / 6) {
        dark = !dark;
    }
    return dark ? 1.0F : 0.0F;
}

std::vector<cv::Point2d> CheckerTarget::points() const {
    std::vector<cv::Point2d> corners;
    for (int row = 1; row < rows_; row++) {
        for (int column = 1; column < columns_; column++) {
            corners.emplace_back(column, row);
        }
    }
    return corners;
}

PlateTarget::PlateTarget(const std::vector<InkDisc> &dots, const std::vector<cv::Point2d> &triangle)
    : discsByCell_(size_t(plateCells * plateCells)), triangle_(triangle) {
    std::vector<InkDisc> discs = dots;
    for (const cv::Point2d &centre : PlateTarget::points()) {
        discs.push_back({centre, 0.5, 0});
    }
    for (const InkDisc &disc : discs) {
        for (int row = int(disc.centre.y - disc.radius); row <= int(disc.centre.y + disc.radius); row++) {
            for (int column = int(disc.centre.x - disc.radius); column <= int(disc.centre.x + disc.radius); column++) {
                discsByCell_[size_t(row) * size_t(plateCells) + size_t(column)].push_back(disc);
            }
        }
    }
}

float PlateTarget::ink(double x, double y) const {
    if (x < 0 || y < 0 || x >= plateCells || y >= plateCells) {
        return 0;
    }
    if (x < 0.5 || y < 0.5 || x >= plateCells - 0.5 || y >= plateCells - 0.5) {
        return 1;
    }
    for (const InkDisc &disc : discsByCell_[size_t(y) * size_t(plateCells) + size_t(x)]) {
        const double dx = x - disc.centre.x;
        const double dy = y - disc.centre.y;
        const double distance2 = dx * dx + dy * dy;
        if (distance2 < disc.radius * disc.radius && distance2 >= disc.holeRadius * disc.holeRadius) {
            return 1;
        }
    }
    return triangle_.size() == 3 && insideTriangle(triangle_, x, y) ? 1.0F : 0.0F;
}

std::vector<cv::Point2d> PlateTarget::points() const {
    std::vector<cv::Point2d> centres;
    for (int row = 1; row <= 7; row++) {
        for (int column = 1; column <= 7; column++) {
            centres.emplace_back(2.0 * column, 2.0 * row);
        }
    }
    return centres;
}

}  // namespace reader_bench
