#include "pattern_reader/plate_marks.h"

#include <algorithm>
#include <cmath>

#include "pattern_reader/plate_view.h"
#include "pattern_reader/round_marks.h"

namespace pattern_reader {

namespace {

// Returns the finest level in which this radius has at most `most` pixels, or the coarsest level if there is none.
const ImageLevel &levelForRadius(const std::vector<ImageLevel> &levels, float radius, float most) {
    size_t number = 0;
    while (number + 1 < levels.size() && radius / levels[number].scale() > most) {
        number++;
    }
    return levels[number];
}

// The size of a mark is its area divided by the area of a lattice cell at the same place. For each mark, the result is
// true if its size is close to the median size of all marks. A mark that is partly covered has another size, and its
// measured centre is wrong.
std::vector<bool> haveUsualSize(const MarkLattice &found, const MarkMap &imageFromCell) {
    std::vector<double> sizes;
    sizes.reserve(found.marks.size());
    for (size_t i = 0; i < found.marks.size(); i++) {
        const cv::Matx22d steps = imageFromCell.stepsAt(found.lattice.corners[i].cell);
        sizes.push_back(double(found.marks[i].area) / std::abs(cv::determinant(steps)));
    }
    std::vector<double> sorted = sizes;
    const auto middle = sorted.begin() + std::ptrdiff_t(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    std::vector<bool> usual;
    usual.reserve(sizes.size());
    for (const double size : sizes) {
        usual.push_back(size > 0.8 * *middle && size < 1.25 * *middle);
    }
    return usual;
}

bool mapCells(const MarkLattice &found, MarkMap &imageFromCell) {
    std::vector<MappedMark> marks;
    for (const LatticeCorner &corner : found.lattice.corners) {
        marks.push_back({corner.cell, corner.position});
    }
    imageFromCell = MarkMap(marks);
    if (!imageFromCell.isKnown()) {
        return false;
    }
    const std::vector<bool> usual = haveUsualSize(found, imageFromCell);
    std::vector<MappedMark> clear;
    for (size_t i = 0; i < marks.size(); i++) {
        if (usual[i]) {
            clear.push_back(marks[i]);
        }
    }
    if (clear.size() < marks.size()) {
        MarkMap map(clear);
        if (map.isKnown()) {
            imageFromCell = std::move(map);
        }
    }
    return true;
}

// The distance, in cells, between two points of the picture.
double cellsBetween(const cv::Matx22d &steps, cv::Point2d a, cv::Point2d b) {
    return cv::norm(steps.inv() * cv::Vec2d(a.x - b.x, a.y - b.y));
}

// Looks for a mark in every cell that may belong to the plate: in all blocks of 7 × 7 cells that contain the marks
// found so far. A cell's mark is found even if the marks between this cell and the known marks are covered. Returns
// false if no mark was added.
bool addMissingMarks(const std::vector<ImageLevel> &levels, const MarkMap &imageFromCell, MarkLattice &found) {
    const cv::Rect extent = found.lattice.extent();
    const cv::Rect picture({0, 0}, levels.front().picture.size());
    bool added = false;
    for (int y = extent.br().y - marksPerSide; y < extent.y + marksPerSide; y++) {
        for (int x = extent.br().x - marksPerSide; x < extent.x + marksPerSide; x++) {
            if (found.lattice.indexAt({x, y}) >= 0) {
                continue;
            }
            const cv::Point2d at = imageFromCell.at(cv::Point(x, y));
            const cv::Matx22d steps = imageFromCell.stepsAt(cv::Point(x, y));
            const double area = CV_PI * markRadius * markRadius * std::abs(cv::determinant(steps));
            const auto radius = float(std::sqrt(area / CV_PI));
            if (!picture.contains(at) || !(radius > 1)) {
                continue;
            }
            RoundMark mark;
            const ImageLevel &level = levelForRadius(levels, radius, 5);
            if (measureMark(level, cv::Point2f(at), radius, mark) && mark.area < 1.5 * area && area < 1.5 * mark.area &&
                cellsBetween(steps, cv::Point2d(mark.centre), at) < 0.15 &&
                found.lattice.add({{x, y}, mark.centre, 1})) {
                found.marks.push_back(mark);
                added = true;
            }
        }
    }
    return added;
}

// Keeps the marks in the block of 7 × 7 cells that contains the most of them. The others cannot belong to the same
// plate and are removed. If more than an eighth of the marks are outside the block, returns false and removes nothing.
bool keepOnePlate(MarkLattice &found) {
    const cv::Rect extent = found.lattice.extent();
    if (extent.width <= marksPerSide && extent.height <= marksPerSide) {
        return true;
    }
    std::vector<bool> keep;
    std::ptrdiff_t most = 0;
    for (int y = extent.y; y <= std::max(extent.y, extent.br().y - marksPerSide); y++) {
        for (int x = extent.x; x <= std::max(extent.x, extent.br().x - marksPerSide); x++) {
            const cv::Rect plate(x, y, marksPerSide, marksPerSide);
            std::vector<bool> inside;
            for (const LatticeCorner &corner : found.lattice.corners) {
                inside.push_back(plate.contains(corner.cell));
            }
            const std::ptrdiff_t count = std::count(inside.begin(), inside.end(), true);
            if (count > most) {
                most = count;
                keep = std::move(inside);
            }
        }
    }
    if (size_t(most) * 8 < found.marks.size() * 7) {
        return false;
    }
    std::vector<RoundMark> kept;
    for (size_t i = 0; i < keep.size(); i++) {
        if (keep[i]) {
            kept.push_back(found.marks[i]);
        }
    }
    found.marks = std::move(kept);
    found.lattice.retain(keep);
    return true;
}

}  // namespace

bool completeMarks(const std::vector<ImageLevel> &levels, MarkLattice &found, MarkMap &imageFromCell) {
    const auto prepare = [&] { return keepOnePlate(found) && mapCells(found, imageFromCell); };
    // Each round adds marks and then computes the map again. The new map is better because it uses more marks, so the
    // next round can find marks that were missed before.
    bool usable = prepare();
    for (int round = 0; round < 3 && usable && addMissingMarks(levels, imageFromCell, found); round++) {
        usable = prepare();
    }
    const cv::Rect extent = found.lattice.extent();
    return usable && extent.width >= 4 && extent.height >= 4;
}

}  // namespace pattern_reader
