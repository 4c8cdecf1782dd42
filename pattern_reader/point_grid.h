// Points by the cells of a square grid over the picture, so that those around a place are found without going through
// all of them. In a header for its visits to be inlined: they are the inner loop of the search for neighbours.
#pragma once

#include <algorithm>
#include <opencv2/core.hpp>
#include <vector>

namespace pattern_reader {

class PointGrid {
public:
    PointGrid(const cv::Size &picture, int cellSide)
        : cellSide_(cellSide),
          columns_(picture.width / cellSide + 1),
          rows_(picture.height / cellSide + 1),
          newest_(size_t(columns_) * size_t(rows_), -1) {}

    // Points are numbered from 0 in the order in which they are added.
    void add(cv::Point2f point) {
        int &head = newest_[slot(cellOf(point.x, columns_), cellOf(point.y, rows_))];
        older_.push_back(head);
        head = int(older_.size()) - 1;
    }

    // Calls visit with the number of every point in the cells that a square of twice the reach touches.
    template <class Visit>
    void visitAround(cv::Point2f middle, float reach, const Visit &visit) const {
        const int right = cellOf(middle.x + reach, columns_);
        const int bottom = cellOf(middle.y + reach, rows_);
        for (int y = cellOf(middle.y - reach, rows_); y <= bottom; y++) {
            for (int x = cellOf(middle.x - reach, columns_); x <= right; x++) {
                for (int k = newest_[slot(x, y)]; k >= 0; k = older_[size_t(k)]) {
                    visit(size_t(k));
                }
            }
        }
    }

private:
    int cellOf(float coordinate, int count) const { return std::clamp(int(coordinate) / cellSide_, 0, count - 1); }
    size_t slot(int x, int y) const { return size_t(y) * size_t(columns_) + size_t(x); }

    int cellSide_;  // pixels
    int columns_;
    int rows_;
    std::vector<int> newest_;  // by cell, the point added last; -1 without one
    std::vector<int> older_;   // by point, the one added to its cell before it
};

}  // namespace pattern_reader
