#include "pattern_reader/plate_marks.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "pattern_reader/plate_view.h"
#include "pattern_reader/round_marks.h"

namespace pattern_reader {

namespace {

// The finest level in which a radius has at most so many pixels.
const ImageLevel &levelForRadius(const std::vector<ImageLevel> &levels, float radius, float most) {
    size_t number = 0;
    while (number + 1 < levels.size() && radius / levels[number].scale() > most) {
        number++;
    }
    return levels[number];
}

bool mapCells(const MarkLattice &found, cv::Matx33d &imageFromCell) {
    std::vector<cv::Point2f> cells;
    std::vector<cv::Point2f> images;
    for (const LatticeCorner &corner : found.lattice.corners) {
        cells.emplace_back(corner.cell);
        images.push_back(corner.position);
    }
    const cv::Mat h = cv::findHomography(cells, images);
    if (h.empty()) {
        return false;
    }
    imageFromCell = h;
    return true;
}

// Looks for marks wherever the plate can still reach, also behind something that covers a part of it.
bool addMissingMarks(const std::vector<ImageLevel> &levels, const cv::Matx33d &imageFromCell, MarkLattice &found) {
    const cv::Rect extent = found.lattice.extent();
    bool added = false;
    for (int y = extent.br().y - marksPerSide; y < extent.y + marksPerSide; y++) {
        for (int x = extent.br().x - marksPerSide; x < extent.x + marksPerSide; x++) {
            if (found.lattice.indexAt({x, y}) >= 0) {
                continue;
            }
            const cv::Point2d at = transform(imageFromCell, cv::Point2d(x, y));
            const cv::Point2d a = transform(imageFromCell, cv::Point2d(x + 0.5, y)) - at;
            const cv::Point2d b = transform(imageFromCell, cv::Point2d(x, y + 0.5)) - at;
            const double area = CV_PI * markRadius * markRadius * std::abs(a.cross(b)) * 4;
            const auto radius = float(std::sqrt(area / CV_PI));
            const double step = 2 * std::min(std::hypot(a.x, a.y), std::hypot(b.x, b.y));
            if (!(radius > 1) || !(radius < 200)) {
                continue;
            }
            RoundMark mark;
            const ImageLevel &level = levelForRadius(levels, radius, 5);
            if (measureMark(level, cv::Point2f(at), radius, mark) && mark.area < 1.5 * area && area < 1.5 * mark.area &&
                std::hypot(mark.centre.x - at.x, mark.centre.y - at.y) < 0.15 * step &&
                found.lattice.add({{x, y}, mark.centre, 1})) {
                found.marks.push_back(mark);
                added = true;
            }
        }
    }
    return added;
}

// Leaves out what lies outside the 7 × 7 cells with the most marks: something else that looks like a mark there. False
// when that is more than a few.
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

// Where the picture of a circle's centre lies from the centre of the circle's picture.
cv::Point2d centreOffset(const cv::Matx33d &h, cv::Point2d centre) {
    const double r = markRadius;
    const cv::Matx33d circle(1, 0, -centre.x, 0, 1, -centre.y, -centre.x, -centre.y,
                             centre.x * centre.x + centre.y * centre.y - r * r);
    const cv::Matx33d inverse = h.inv();
    const cv::Matx33d q = inverse.t() * circle * inverse;
    const double determinant = q(0, 0) * q(1, 1) - q(0, 1) * q(1, 0);
    const cv::Point2d ellipse((q(0, 1) * q(1, 2) - q(1, 1) * q(0, 2)) / determinant,
                              (q(1, 0) * q(0, 2) - q(0, 0) * q(1, 2)) / determinant);
    return transform(h, centre) - ellipse;
}

}  // namespace

bool completeMarks(const std::vector<ImageLevel> &levels, MarkLattice &found, cv::Matx33d &imageFromCell) {
    // From the nearer marks to the farther ones: each round carries the lattice on by what the last has found.
    for (int round = 0; round < 3; round++) {
        if (!keepOnePlate(found) || !mapCells(found, imageFromCell)) {
            return false;
        }
        if (!addMissingMarks(levels, imageFromCell, found)) {
            break;
        }
    }
    const bool onePlate = keepOnePlate(found);
    const cv::Rect extent = found.lattice.extent();
    return onePlate && extent.width >= 4 && extent.height >= 4 && mapCells(found, imageFromCell);
}

void addMarks(const std::vector<ImageLevel> &levels, const MarkLattice &found, const cv::Matx33d &imageFromCell,
              const LatticeMotion &motion, PatternReading &reading) {
    for (size_t i = 0; i < found.marks.size(); i++) {
        RoundMark mark = found.marks[i];
        const float radius = std::sqrt(mark.area / float(CV_PI));
        measureMark(levelForRadius(levels, radius, 7), mark.centre, radius, mark);
        const cv::Point cell = found.lattice.corners[i].cell;
        const cv::Point index = motion.point(cell);
        const cv::Point2d offset = centreOffset(imageFromCell, cell);
        reading.corners.push_back({mark.centre + cv::Point2f(offset), 2 * (index + cv::Point(1, 1))});
    }
    std::sort(reading.corners.begin(), reading.corners.end(), [](const PatternCorner &a, const PatternCorner &b) {
        return a.lattice.y != b.lattice.y ? a.lattice.y < b.lattice.y : a.lattice.x < b.lattice.x;
    });
}

}  // namespace pattern_reader
