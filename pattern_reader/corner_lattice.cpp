#include "pattern_reader/corner_lattice.h"

#include <algorithm>
#include <cmath>

namespace pattern_reader {

namespace {

std::array<cv::Point, 4> steps() {
    return {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)};
}

bool inRange(cv::Point cell) {
    return std::abs(cell.x) <= CornerLattice::reach && std::abs(cell.y) <= CornerLattice::reach;
}

float length(cv::Point2f v) {
    return std::hypot(v.x, v.y);
}

}  // namespace

size_t CornerLattice::slotOf(cv::Point cell) const {
    return size_t(cell.y - covered.y) * size_t(covered.width) + size_t(cell.x - covered.x);
}

void CornerLattice::cover(cv::Point cell) {
    if (covered.contains(cell)) {
        return;
    }
    const cv::Size room(std::max(4, covered.width / 2), std::max(4, covered.height / 2));
    covered |= cv::Rect(cell - cv::Point(room), cell + cv::Point(room));
    indices.assign(size_t(covered.area()), -1);
    for (size_t i = 0; i < corners.size(); i++) {
        indices[slotOf(corners[i].cell)] = int(i);
    }
}

bool CornerLattice::add(const LatticeCorner &corner) {
    if (!inRange(corner.cell) || indexAt(corner.cell) >= 0) {
        return false;
    }
    cover(corner.cell);
    indices[slotOf(corner.cell)] = int(corners.size());
    corners.push_back(corner);
    return true;
}

int CornerLattice::indexAt(cv::Point cell) const {
    return covered.contains(cell) ? indices[slotOf(cell)] : -1;
}

const LatticeCorner *CornerLattice::at(cv::Point cell) const {
    const int index = indexAt(cell);
    return index < 0 ? nullptr : &corners[size_t(index)];
}

void CornerLattice::retain(const std::vector<bool> &keep) {
    std::vector<LatticeCorner> kept;
    for (size_t i = 0; i < corners.size(); i++) {
        indices[slotOf(corners[i].cell)] = -1;
        if (keep[i]) {
            kept.push_back(corners[i]);
        }
    }
    corners = std::move(kept);
    for (size_t i = 0; i < corners.size(); i++) {
        indices[slotOf(corners[i].cell)] = int(i);
    }
}

cv::Rect CornerLattice::extent() const {
    if (corners.empty()) {
        return {};
    }
    cv::Point low = corners.front().cell;
    cv::Point high = low;
    for (const LatticeCorner &corner : corners) {
        low = {std::min(low.x, corner.cell.x), std::min(low.y, corner.cell.y)};
        high = {std::max(high.x, corner.cell.x), std::max(high.y, corner.cell.y)};
    }
    return {low, high + cv::Point(1, 1)};
}

bool CornerLattice::predict(cv::Point cell, cv::Point2f &position) const {
    cv::Point2f sum;
    float weights = 0;
    const auto count = [&](cv::Point2f p, float weight) {
        sum += p * weight;
        weights += weight;
    };
    for (const cv::Point step : steps()) {
        const LatticeCorner *one = at(cell + step);
        const LatticeCorner *two = one == nullptr ? nullptr : at(cell + 2 * step);
        if (two != nullptr) {
            const LatticeCorner *three = at(cell + 3 * step);
            if (three != nullptr) {
                count(3 * one->position - 3 * two->position + three->position, 1);
            } else {
                count(2 * one->position - two->position, 0.7F);
            }
        }
        const cv::Point side1(-step.y, step.x);
        const LatticeCorner *a = at(cell + side1);
        const LatticeCorner *b = at(cell + side1 + step);
        if (one != nullptr && a != nullptr && b != nullptr) {
            count(one->position + a->position - b->position, 0.7F);
        }
        const LatticeCorner *opposite = at(cell - step);
        if (one != nullptr && opposite != nullptr) {
            count((one->position + opposite->position) / 2, 2);
        }
    }
    if (weights == 0) {
        return false;
    }
    position = sum / weights;
    return true;
}

bool CornerLattice::interpolate(cv::Point cell, cv::Point2f &position) const {
    cv::Point2f sum;
    int pairs = 0;
    for (const cv::Point step : {cv::Point(1, 0), cv::Point(0, 1)}) {
        const LatticeCorner *before = at(cell - step);
        const LatticeCorner *after = at(cell + step);
        if (before != nullptr && after != nullptr) {
            sum += (before->position + after->position) / 2;
            pairs++;
        }
    }
    position = pairs == 0 ? sum : sum / pairs;
    return pairs > 0;
}

float CornerLattice::spacingAt(cv::Point cell) const {
    const LatticeCorner *here = at(cell);
    float shortest = 0;
    for (const cv::Point step : steps()) {
        const LatticeCorner *one = at(cell + step);
        const LatticeCorner *other = here != nullptr ? here : at(cell + 2 * step);
        if (one == nullptr || other == nullptr) {
            continue;
        }
        const float distance = length(one->position - other->position);
        shortest = shortest == 0 ? distance : std::min(shortest, distance);
    }
    return shortest;
}

// Estimates the lattice step at a cell along one axis from the positions of two corners. These pairs of corners are
// tried in this order: one corner on each side of the cell; the cell's own corner and a neighbour; two corners on the
// same side of the cell; two corners in a neighbouring line that is parallel to the axis.
bool CornerLattice::stepAlong(cv::Point cell, cv::Point step, cv::Point2f &length) const {
    const auto between = [&](cv::Point from, cv::Point to, float share) {
        const LatticeCorner *a = at(from);
        const LatticeCorner *b = a == nullptr ? nullptr : at(to);
        if (b != nullptr) {
            length = (b->position - a->position) * share;
        }
        return b != nullptr;
    };
    if (between(cell - step, cell + step, 0.5F) || between(cell, cell + step, 1) || between(cell - step, cell, 1) ||
        between(cell + step, cell + 2 * step, 1) || between(cell - 2 * step, cell - step, 1)) {
        return true;
    }
    const cv::Point side(step.y, step.x);
    for (const cv::Point beside : {cell + side, cell - side}) {
        if (between(beside - step, beside + step, 0.5F) || between(beside, beside + step, 1) ||
            between(beside - step, beside, 1)) {
            return true;
        }
    }
    return false;
}

std::optional<LatticeSteps> CornerLattice::stepsAt(cv::Point cell) const {
    LatticeSteps steps;
    if (!stepAlong(cell, {1, 0}, steps.column) || !stepAlong(cell, {0, 1}, steps.row) || !(steps.area() > 0)) {
        return std::nullopt;
    }
    return steps;
}

}  // namespace pattern_reader
