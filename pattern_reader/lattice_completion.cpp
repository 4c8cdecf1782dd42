#include "pattern_reader/lattice_completion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "pattern_reader/point_detector.h"

namespace pattern_reader {

namespace {

std::array<cv::Point, 4> steps() {
    return {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)};
}

float length(cv::Point2f v) {
    return std::hypot(v.x, v.y);
}

float cross(cv::Point2f a, cv::Point2f b) {
    return a.x * b.y - a.y * b.x;
}

// The finest level in which a lattice step is at most 12 pixels, or the coarsest level if there is no such level.
const ImageLevel &levelFor(const std::vector<ImageLevel> &levels, float spacing) {
    size_t number = 0;
    while (number + 1 < levels.size() && spacing / levels[number].scale() > 12) {
        number++;
    }
    return levels[number];
}

float greyAt(const cv::Mat &smoothed, cv::Point2f p) {
    const int x = int(std::lround(p.x));
    const int y = int(std::lround(p.y));
    return float(smoothed.at<int16_t>(std::clamp(y, 0, smoothed.rows - 1), std::clamp(x, 0, smoothed.cols - 1))) / 64;
}

// The border between two squares runs from the corner `from` to its neighbour `to`. Returns the contrast across this
// border: the grey level on the side that is light according to the lattice, minus the grey level on the other side.
// `to` need not be in the lattice.
float borderContrast(const ImageLevel &level, const CornerLattice &lattice, const LatticeCorner &from,
                     const LatticeCorner &to) {
    const cv::Point step = to.cell - from.cell;
    const cv::Point2f a = level.fromImage(from.position);
    const cv::Point2f b = level.fromImage(to.position);
    // The border runs along one axis of the lattice. If the lattice steps are known here, `across` runs along the other
    // axis. In a sheared lattice, a direction at a right angle to the border could lead into the mark of the next
    // square.
    cv::Point2f across(a.y - b.y, b.x - a.x);
    if (const std::optional<LatticeSteps> steps = lattice.stepsAt(from.cell)) {
        across = (step.x != 0 ? steps->row : -steps->column) * (float(step.x + step.y) / level.scale());
    }
    across *= 0.22F;
    const cv::Point2f middle = (a + b) / 2;
    // The square to the right of the step, for an observer who looks along the step. It is given by its top-left
    // corner.
    const cv::Point square = step.x == 1    ? from.cell
                             : step.y == 1  ? from.cell + cv::Point(-1, 0)
                             : step.x == -1 ? from.cell + cv::Point(-1, -1)
                                            : from.cell + cv::Point(0, -1);
    const float difference = greyAt(level.smoothed, middle + across) - greyAt(level.smoothed, middle - across);
    return lattice.isLight(square) ? difference : -difference;
}

cv::Point strongestNear(const cv::Mat &smoothed, cv::Point2f p, int radius) {
    const int cx = int(std::lround(p.x));
    const int cy = int(std::lround(p.y));
    cv::Point best(cx, cy);
    float bestValue = 0;
    for (int y = std::max(1, cy - radius); y <= std::min(smoothed.rows - 2, cy + radius); y++) {
        const auto *up = smoothed.ptr<int16_t>(y - 1);
        const auto *mid = smoothed.ptr<int16_t>(y);
        const auto *down = smoothed.ptr<int16_t>(y + 1);
        for (int x = std::max(1, cx - radius); x <= std::min(smoothed.cols - 2, cx + radius); x++) {
            const auto xx = float(mid[x - 1] + mid[x + 1] - 2 * mid[x]);
            const auto yy = float(up[x] + down[x] - 2 * mid[x]);
            const float xy = 0.25F * float(up[x - 1] + down[x + 1] - up[x + 1] - down[x - 1]);
            const float value = xy * xy - xx * yy;
            if (value > bestValue) {
                bestValue = value;
                best = {x, y};
            }
        }
    }
    return best;
}

// True if the saddle is light in those directions in which the lattice has light squares at this corner.
bool hasPolarity(const CornerLattice &lattice, cv::Point cell, cv::Point2f axis0, cv::Point2f axis1,
                 const SaddlePoint &saddle) {
    const cv::Point2f bright(std::cos(saddle.brightAxis), std::sin(saddle.brightAxis));
    // The light axis lies between axis 0 and axis 1 if these are on opposite sides of it.
    const bool between = cross(axis0, bright) * cross(bright, axis1) > 0;
    return between == lattice.isLight(cell);
}

// Properties of an absent corner, predicted from its neighbours.
struct Surroundings {
    cv::Point2f expected;             // position in the image, pixels
    float spacing = 0;                // the shortest lattice step here, pixels
    std::array<cv::Point2f, 2> axes;  // the column step and the row step; (0, 0) if no neighbour shows the step
};

bool lookAround(const CornerLattice &lattice, cv::Point cell, Surroundings &around) {
    if (!lattice.predict(cell, around.expected)) {
        return false;
    }
    int neighbours = 0;
    for (const cv::Point step : steps()) {
        const LatticeCorner *one = lattice.at(cell + step);
        if (one == nullptr) {
            continue;
        }
        const cv::Point2f d = (one->position - around.expected) * float(step.x + step.y);
        around.axes[step.x != 0 ? 0 : 1] = d;
        const float distance = std::max(length(d), lattice.spacingAt(one->cell));
        around.spacing = neighbours == 0 ? distance : std::min(around.spacing, distance);
        neighbours++;
    }
    return neighbours > 0 && around.spacing >= 2;
}

bool findSaddle(const ImageLevel &level, const Surroundings &around, const std::optional<LatticeSteps> &steps,
                SaddlePoint &saddle) {
    const cv::Point2f near = level.fromImage(around.expected);
    const float spacing = around.spacing / level.scale();
    if (near.x < 3 || near.y < 3 || near.x > float(level.smoothed.cols) - 4 ||
        near.y > float(level.smoothed.rows) - 4) {
        return false;
    }
    const float narrowest = steps ? std::min(spacing, steps->lineDistance() / level.scale()) : spacing;
    const int radius = std::clamp(int(0.25F * narrowest), 1, 3);
    if (!locateSaddle(level, cv::Point2f(strongestNear(level.smoothed, near, radius)), 1.6F, saddle)) {
        return false;
    }
    const cv::Point2f off = saddle.position - near;
    return length(off) <= 0.3F * spacing && (!steps || steps->count(off * level.scale()) <= 0.4F);
}

// True if every border between the corner and one of its neighbours has enough contrast: at least 3 grey levels, and at
// least 30 % of the contrast of the next border beyond the neighbour.
bool bordersContinue(const ImageLevel &level, const CornerLattice &lattice, const LatticeCorner &corner) {
    for (const cv::Point step : steps()) {
        const LatticeCorner *one = lattice.at(corner.cell + step);
        if (one == nullptr) {
            continue;
        }
        const LatticeCorner *two = lattice.at(corner.cell + 2 * step);
        const float usual = two == nullptr ? 0 : borderContrast(level, lattice, *two, *one);
        if (borderContrast(level, lattice, *one, corner) < std::max(3.0F, 0.3F * usual)) {
            return false;
        }
    }
    return true;
}

bool findCorner(const CornerLattice &lattice, cv::Point cell, const std::vector<ImageLevel> &levels,
                LatticeCorner &found) {
    Surroundings around;
    if (!lookAround(lattice, cell, around)) {
        return false;
    }
    const std::optional<LatticeSteps> steps = lattice.stepsAt(cell);
    const float narrowest = steps ? std::min(around.spacing, steps->lineDistance()) : around.spacing;
    const ImageLevel &level = levelFor(levels, narrowest);
    SaddlePoint saddle;
    if (!findSaddle(level, around, steps, saddle)) {
        return false;
    }
    // The colours can be checked only if both axes are known.
    const auto &[axis0, axis1] = around.axes;
    if (length(axis0) > 0 && length(axis1) > 0 && !hasPolarity(lattice, cell, axis0, axis1, saddle)) {
        return false;
    }
    found = {cell, level.toImage(saddle.position), saddle.strength};
    return bordersContinue(level, lattice, found);
}

void dropOutliers(CornerLattice &lattice) {
    std::vector<bool> keep(lattice.corners.size(), true);
    bool all = true;
    for (size_t i = 0; i < lattice.corners.size(); i++) {
        const LatticeCorner &corner = lattice.corners[i];
        cv::Point2f expected;
        const bool told = lattice.interpolate(corner.cell, expected);
        const std::optional<LatticeSteps> steps = lattice.stepsAt(corner.cell);
        const float spacing = lattice.spacingAt(corner.cell);
        const cv::Point2f off = expected - corner.position;
        if (spacing == 0 || (told && (length(off) > 0.3F * spacing || (steps && steps->count(off) > 0.3F)))) {
            keep[i] = false;
            all = false;
        }
    }
    if (!all) {
        lattice.retain(keep);
    }
}

}  // namespace

void completeLattice(CornerLattice &lattice, const std::vector<ImageLevel> &levels) {
    dropOutliers(lattice);
    std::vector<cv::Point> open;
    for (const LatticeCorner &corner : lattice.corners) {
        open.push_back(corner.cell);
    }
    // If no corner is found at a cell, the cell is tried again only when it gets another neighbour.
    while (!open.empty()) {
        std::vector<cv::Point> added;
        for (const cv::Point cell : open) {
            for (const cv::Point step : steps()) {
                const cv::Point target = cell + step;
                LatticeCorner found;
                if (lattice.indexAt(target) < 0 && findCorner(lattice, target, levels, found) && lattice.add(found)) {
                    added.push_back(target);
                }
            }
        }
        open = std::move(added);
    }
    dropOutliers(lattice);
}

}  // namespace pattern_reader
