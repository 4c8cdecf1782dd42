// Sorts points into the cells of a square grid over the picture, so that the points around a place are found without
// going through all points. Everything is in the header so that visitAround can be inlined: it is the inner loop of the
// search for neighbours.
#pragma once

#include <algorithm>
#include <opencv2/core.hpp>
#include <vector>

namespace pattern_reader {

class PointGrid {
public:
    PointGrid(const cv::Size &picture, int cellSide)
        : cellLength(cellSide),
          columns(picture.width / cellSide + 1),
          rows(picture.height / cellSide + 1),
          newest(size_t(columns) * size_t(rows), -1) {}

    // Points are numbered from 0 in the order in which they are added.
    void add(cv::Point2f point) {
        int &head = newest[slot(cellOf(point.x, columns), cellOf(point.y, rows))];
        older.push_back(head);
        head = int(older.size()) - 1;
    }

    // Calls `visit` with the number of every point that is within `reach` of `middle` in both x and y. Also calls
    // `visit` for all other points in the grid cells that this area touches.
    template <class Visit>
    void visitAround(cv::Point2f middle, float reach, const Visit &visit) const {
        const int right = cellOf(middle.x + reach, columns);
        const int bottom = cellOf(middle.y + reach, rows);
        for (int y = cellOf(middle.y - reach, rows); y <= bottom; y++) {
            for (int x = cellOf(middle.x - reach, columns); x <= right; x++) {
                for (int k = newest[slot(x, y)]; k >= 0; k = older[size_t(k)]) {
                    visit(size_t(k));
                }
            }
        }
    }

private:
    int cellOf(float coordinate, int count) const { return std::clamp(int(coordinate) / cellLength, 0, count - 1); }
    size_t slot(int x, int y) const { return size_t(y) * size_t(columns) + size_t(x); }

    int cellLength;  // pixels
    int columns;
    int rows;
    std::vector<int> newest;  // for each cell, the point added last; -1 if there is none
    std::vector<int> older;   // for each point, the one added to its cell before it
};

}  // namespace pattern_reader
