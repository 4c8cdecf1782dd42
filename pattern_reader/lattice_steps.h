// The column and the row step of a lattice at one place: how far apart two points are in lattice coordinates.
//
// In a tilted picture the lattice is sheared, and its lines lie far closer than its steps are long: only in lattice
// coordinates does a distance say whether a point can be the lattice's.
#pragma once

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

namespace pattern_reader {

struct LatticeSteps {
    cv::Point2f column, row;  // pixels

    float area() const { return std::abs(column.x * row.y - column.y * row.x); }
    // How long a difference between two points is in lattice coordinates. Infinite or not a number where the two steps
    // are parallel.
    float count(cv::Point2f difference) const {
        const float alongColumn = difference.x * row.y - difference.y * row.x;
        const float alongRow = column.x * difference.y - column.y * difference.x;
        return std::sqrt(alongColumn * alongColumn + alongRow * alongRow) / area();
    }
    // The distance between the closer two of neighbouring lines.
    float lineDistance() const { return area() / std::sqrt(std::max(column.dot(column), row.dot(row))); }
};

}  // namespace pattern_reader
