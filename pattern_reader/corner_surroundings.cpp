#include "pattern_reader/corner_surroundings.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

namespace pattern_reader {

namespace {

const std::array<cv::Point, 2> axes{cv::Point(1, 0), cv::Point(0, 1)};

// A border as a parabola through a corner. After t lattice steps from the corner, the border is at
// step * t + curve * t², relative to the corner.
struct Parabola {
    cv::Point2f step, curve;
};

// The bend of a border is measured over up to this many steps to both sides, or over up to twice as many to one side.
// The fewer steps there are, the more an error of a corner looks like a bend.
constexpr int farthest = 3;

// Returns the border through a corner. The corner must have neighbours in both directions of the border.
Parabola symmetricParabola(const CornerLattice &lattice, const LatticeCorner &corner, cv::Point step) {
    const cv::Point2f before = lattice.at(corner.cell - step)->position;
    const cv::Point2f after = lattice.at(corner.cell + step)->position;
    Parabola border{(after - before) / 2, (after + before) / 2 - corner.position};
    for (int reach = 2; reach <= farthest; reach++) {
        const LatticeCorner *low = lattice.at(corner.cell - reach * step);
        const LatticeCorner *high = lattice.at(corner.cell + reach * step);
        if (low == nullptr || high == nullptr) {
            break;
        }
        border.curve = ((high->position + low->position) / 2 - corner.position) / (reach * reach);
    }
    return border;
}

// Returns the border through a corner. The corner must have a neighbour in the direction of the step.
Parabola oneSidedParabola(const CornerLattice &lattice, const LatticeCorner &corner, cv::Point step) {
    const cv::Point2f next = lattice.at(corner.cell + step)->position;
    Parabola border{next - corner.position, {}};
    for (int reach = 1; reach <= farthest; reach++) {
        const LatticeCorner *middle = lattice.at(corner.cell + reach * step);
        const LatticeCorner *end = lattice.at(corner.cell + 2 * reach * step);
        if (middle == nullptr || end == nullptr) {
            break;
        }
        border.curve = ((end->position + corner.position) / 2 - middle->position) / (reach * reach);
    }
    border.step -= border.curve;
    return border;
}

// Finds the border that runs through a corner along the axis `step` of the lattice. Sets `direction` to the border's
// step from one lattice corner to the next, in image pixels, and `bend` to half the border's curvature. The bend is
// positive if the border turns clockwise in the image when it is followed in this direction. Returns false if the
// corner has no neighbour along the axis.
bool stepThrough(const CornerLattice &lattice, const LatticeCorner &corner, cv::Point step, cv::Point2f &direction,
                 float &bend) {
    const bool before = lattice.at(corner.cell - step) != nullptr;
    const bool after = lattice.at(corner.cell + step) != nullptr;
    if (!before && !after) {
        return false;
    }
    Parabola border = before && after ? symmetricParabola(lattice, corner, step)
                                      : oneSidedParabola(lattice, corner, after ? step : -step);
    if (!after) {
        border.step = -border.step;
    }
    direction = border.step;
    const float length = std::hypot(direction.x, direction.y);
    bend = float(direction.cross(border.curve)) / (length * length * length);
    return true;
}

cv::Point2f project(const cv::Matx33d &imageFromCell, cv::Point cell) {
    const cv::Vec3d v = imageFromCell * cv::Vec3d(cell.x, cell.y, 1);
    return {float(v[0] / v[2]), float(v[1] / v[2])};
}

}  // namespace

void CornerSurroundings::fitMap() const {
    constexpr size_t wanted = 100;
    std::vector<cv::Point2f> cells;
    std::vector<cv::Point2f> images;
    for (size_t i = 0; i < lattice.corners.size(); i += lattice.corners.size() / wanted + 1) {
        cells.emplace_back(lattice.corners[i].cell);
        images.push_back(lattice.corners[i].position);
    }
    const cv::Mat map = cells.size() < 4 ? cv::Mat() : cv::findHomography(cells, images);
    if (!map.empty()) {
        imageFromCell = cv::Matx33d(map);
    }
}

bool CornerSurroundings::stepByMap(cv::Point cell, cv::Point step, cv::Point2f &direction) const {
    if (!mapTried) {
        mapTried = true;
        fitMap();
    }
    if (!imageFromCell) {
        return false;
    }
    direction = (project(*imageFromCell, cell + step) - project(*imageFromCell, cell - step)) / 2;
    return std::isfinite(direction.x) && std::isfinite(direction.y) && direction.dot(direction) > 1;
}

std::optional<CornerBorders> CornerSurroundings::bordersByNeighbours(const LatticeCorner &corner) const {
    CornerBorders borders;
    for (size_t i = 0; i < 2; i++) {
        if (!stepThrough(lattice, corner, axes[i], borders.steps[i], borders.bends[i])) {
            return std::nullopt;
        }
    }
    // CornerBorders counts the bend of the second border with the opposite sign.
    borders.bends[1] = -borders.bends[1];
    return borders;
}

std::optional<CornerBorders> CornerSurroundings::bordersOf(const LatticeCorner &corner) const {
    CornerBorders borders;
    for (size_t i = 0; i < 2; i++) {
        if (!stepThrough(lattice, corner, axes[i], borders.steps[i], borders.bends[i]) &&
            !stepByMap(corner.cell, axes[i], borders.steps[i])) {
            return std::nullopt;
        }
    }
    borders.bends[1] = -borders.bends[1];
    return borders;
}

// Fits a plane to the middle levels of up to nine corners around a cell, and another one to their amplitudes.
LightPlane CornerSurroundings::planeAround(cv::Point cell, const std::vector<CornerFit> &fits) const {
    // At the edge of the lattice, the nine corners are shifted towards its inside.
    const auto shift = [&](cv::Point axis) {
        return lattice.indexAt(cell - axis) < 0 ? 1 : lattice.indexAt(cell + axis) < 0 ? -1 : 0;
    };
    const cv::Point middle(shift(axes[0]), shift(axes[1]));
    cv::Matx33f products = cv::Matx33f::zeros();
    cv::Matx<float, 3, 2> right = cv::Matx<float, 3, 2>::zeros();
    cv::Vec2f squares(0, 0);
    int count = 0;
    for (int y = middle.y - 1; y <= middle.y + 1; y++) {
        for (int x = middle.x - 1; x <= middle.x + 1; x++) {
            const int index = lattice.indexAt(cell + cv::Point(x, y));
            if (index < 0 || size_t(index) >= fits.size() || fits[size_t(index)].amplitude == 0) {
                continue;
            }
            const cv::Vec3f place(1, float(x), float(y));
            const cv::Vec2f levels(fits[size_t(index)].middle, std::abs(fits[size_t(index)].amplitude));
            products += place * place.t();
            right += place * levels.t();
            squares += levels.mul(levels);
            count++;
        }
    }
    LightPlane plane;
    if (count < 5 || std::abs(cv::determinant(products)) < 1) {
        return plane;
    }
    const cv::Matx33f inverse = products.inv();
    const cv::Matx<float, 3, 2> levels = inverse * right;
    plane.known = true;
    for (int i = 0; i < 2; i++) {
        plane.middle[size_t(i)] = levels(i + 1, 0);
        plane.amplitude[size_t(i)] = levels(i + 1, 1);
        plane.spread[size_t(i)] = std::sqrt(inverse(i + 1, i + 1));
    }
    float unexplained = 0;
    for (int j = 0; j < 2; j++) {
        unexplained += squares[j] - right.col(j).dot(levels.col(j));
    }
    plane.scatter = std::sqrt(std::max(0.0F, unexplained) / float(2 * (count - 3)));
    return plane;
}

float CornerSurroundings::lightScatter(const std::vector<CornerFit> &fits, size_t stride) const {
    std::vector<float> scatters;
    for (size_t i = 0; i < lattice.corners.size(); i += stride) {
        const LightPlane plane = planeAround(lattice.corners[i].cell, fits);
        if (plane.known) {
            scatters.push_back(plane.scatter);
        }
    }
    if (scatters.empty()) {
        return 1;
    }
    const auto middle = scatters.begin() + std::ptrdiff_t(scatters.size() / 2);
    std::nth_element(scatters.begin(), middle, scatters.end());
    return std::max(0.05F, *middle);
}

std::array<CornerPrior::Change, 2> CornerSurroundings::lightAround(const LatticeCorner &corner,
                                                                   const std::vector<CornerFit> &fits,
                                                                   float scatter) const {
    const LightPlane plane = planeAround(corner.cell, fits);
    const float sign = lattice.isLight(corner.cell) ? 1.0F : -1.0F;
    std::array<CornerPrior::Change, 2> changes;
    for (size_t i = 0; i < 2; i++) {
        if (!plane.known) {
            changes[i].deviation = 20;
            continue;
        }
        changes[i].middle = plane.middle[i];
        changes[i].amplitude = sign * plane.amplitude[i];
        // If the levels are far from the plane, for example at the edge of a shadow, the plane says little about the
        // light.
        const float uneven = std::max(0.0F, plane.scatter * plane.scatter - 2 * scatter * scatter);
        changes[i].deviation = std::sqrt(scatter * scatter * plane.spread[i] * plane.spread[i] + 2.5F * uneven);
    }
    return changes;
}

}  // namespace pattern_reader
