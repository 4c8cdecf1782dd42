#include "pattern_reader/plain_board.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace pattern_reader {

namespace {

// The number of corners on each column or on each row of a lattice, from the first line to the last.
std::vector<int> cornersByLine(const CornerLattice &lattice, bool columns) {
    const cv::Rect extent = lattice.extent();
    std::vector<int> counts(size_t(columns ? extent.width : extent.height), 0);
    for (const LatticeCorner &corner : lattice.corners) {
        counts[size_t(columns ? corner.cell.x - extent.x : corner.cell.y - extent.y)]++;
    }
    return counts;
}

// True if a line with this many corners is probably not on the board. `counts` has the number of corners on this line
// and on each line parallel to it.
bool isStray(int corners, std::vector<int> counts) {
    const auto middle = counts.begin() + std::ptrdiff_t(counts.size() / 2);
    std::nth_element(counts.begin(), middle, counts.end());
    return corners < 2 || corners * 4 < *middle;
}

// Removes one outermost column or row that has only one corner, or less than a quarter of the median number of corners.
// False if there is no such column or row.
bool dropStrayLine(CornerLattice &lattice) {
    for (const bool columns : {true, false}) {
        const std::vector<int> counts = cornersByLine(lattice, columns);
        for (const bool atEnd : {false, true}) {
            if (counts.size() < 2 || !isStray(atEnd ? counts.back() : counts.front(), counts)) {
                continue;
            }
            const cv::Rect extent = lattice.extent();
            const int first = columns ? extent.x : extent.y;
            const int line = atEnd ? first + int(counts.size()) - 1 : first;
            std::vector<bool> keep;
            for (const LatticeCorner &corner : lattice.corners) {
                keep.push_back((columns ? corner.cell.x : corner.cell.y) != line);
            }
            lattice.retain(keep);
            return true;
        }
    }
    return false;
}

// Returns the motion that turns the lattice by this number of quarter turns and then shifts it so that its smallest
// column and its smallest row are both 1. Sets `size` to the lattice's size after the motion.
LatticeMotion turnedToOrigin(const CornerLattice &lattice, int quarterTurns, cv::Size &size) {
    const cv::Rect extent = lattice.extent();
    LatticeMotion motion{quarterTurns, {}};
    const cv::Point a = motion.point(extent.tl());
    const cv::Point b = motion.point(extent.br() - cv::Point(1, 1));
    size = cv::Size(std::abs(a.x - b.x) + 1, std::abs(a.y - b.y) + 1);
    motion.shift = cv::Point(1, 1) - cv::Point(std::min(a.x, b.x), std::min(a.y, b.y));
    return motion;
}

bool topLeftIsDark(const CornerLattice &lattice, const LatticeMotion &motion) {
    const LatticeCorner &any = lattice.corners.front();
    const cv::Point square = motion.square(any.cell);
    return lattice.isLight(any.cell) == ((square.x + square.y) % 2 != 0);
}

// Returns the cosine of the angle between the pattern's x axis and the image's x axis. The larger it is, the more the
// pattern's x axis points to the right.
double rightwards(const CornerLattice &lattice, const LatticeMotion &motion) {
    cv::Point2d along;
    for (const LatticeCorner &corner : lattice.corners) {
        const cv::Point p = motion.point(corner.cell);
        for (const cv::Point step : {cv::Point(1, 0), cv::Point(0, 1)}) {
            const LatticeCorner *next = lattice.at(corner.cell + step);
            const cv::Point moved = motion.point(corner.cell + step) - p;
            if (next != nullptr && moved.y == 0) {
                along += cv::Point2d(next->position - corner.position) * moved.x;
            }
        }
    }
    return along.x / std::max(std::hypot(along.x, along.y), 1e-9);
}

}  // namespace

std::optional<BoardPlace> placeOnBoard(CornerLattice &lattice, cv::Size board) {
    while (dropStrayLine(lattice)) {
    }
    if (lattice.corners.size() * 2 < size_t(board.area()) || lattice.corners.empty()) {
        return std::nullopt;
    }
    std::vector<LatticeMotion> dark;
    std::vector<LatticeMotion> light;
    for (int turns = 0; turns < 4; turns++) {
        cv::Size size;
        const LatticeMotion motion = turnedToOrigin(lattice, turns, size);
        if (size == board) {
            (topLeftIsDark(lattice, motion) ? dark : light).push_back(motion);
        }
    }
    const std::vector<LatticeMotion> &candidates = dark.empty() ? light : dark;
    if (candidates.empty()) {
        return std::nullopt;
    }
    BoardPlace place;
    place.orientations = int(candidates.size());
    place.motion =
        *std::max_element(candidates.begin(), candidates.end(), [&](const LatticeMotion &a, const LatticeMotion &b) {
            return rightwards(lattice, a) < rightwards(lattice, b);
        });
    return place;
}

}  // namespace pattern_reader
