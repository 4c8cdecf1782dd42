// The column step and the row step of a lattice at one place. With them, a distance in pixels can be converted to
// lattice coordinates.
//
// In the picture of a tilted board, the lattice is sheared, and neighbouring lines can be much closer together than
// neighbouring points on a line. So only a distance in lattice coordinates tells whether a point can belong to the
// lattice.
#pragma once

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

namespace pattern_reader {

struct LatticeSteps {
    cv::Point2f column, row;  // pixels

    float area() const { return std::abs(column.x * row.y - column.y * row.x); }
    // The length of the difference between two points, in lattice coordinates (steps). Infinite or not a number if the
    // two steps are parallel.
    float count(cv::Point2f difference) const {
        const float alongColumn = difference.x * row.y - difference.y * row.x;
        const float alongRow = column.x * difference.y - column.y * difference.x;
        return std::sqrt(alongColumn * alongColumn + alongRow * alongRow) / area();
    }
    // The distance between neighbouring columns or between neighbouring rows, whichever is smaller.
    float lineDistance() const { return area() / std::sqrt(std::max(column.dot(column), row.dot(row))); }
};

}  // namespace pattern_reader
