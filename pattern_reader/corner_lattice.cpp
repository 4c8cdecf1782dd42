#include "pattern_reader/corner_lattice.h"

#include <algorithm>
#include <cmath>

namespace pattern_reader {

namespace {

constexpr int side = 2 * CornerLattice::reach + 1;

std::array<cv::Point, 4> steps() {
    return {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 0), cv::Point(0, -1)};
}

size_t slotOf(cv::Point cell) {
    return size_t(cell.y + CornerLattice::reach) * side + size_t(cell.x + CornerLattice::reach);
}

bool inRange(cv::Point cell) {
    return std::abs(cell.x) <= CornerLattice::reach && std::abs(cell.y) <= CornerLattice::reach;
}

float length(cv::Point2f v) {
    return std::hypot(v.x, v.y);
}

}  // namespace

bool CornerLattice::add(const LatticeCorner &corner) {
    if (indices_.empty()) {
        indices_.assign(size_t(side) * side, int16_t(-1));
    }
    if (!inRange(corner.cell) || indices_[slotOf(corner.cell)] >= 0 || corners.size() >= 32000) {
        return false;
    }
    indices_[slotOf(corner.cell)] = int16_t(corners.size());
    corners.push_back(corner);
    return true;
}

int CornerLattice::indexAt(cv::Point cell) const {
    return !indices_.empty() && inRange(cell) ? indices_[slotOf(cell)] : -1;
}

const LatticeCorner *CornerLattice::at(cv::Point cell) const {
    const int index = indexAt(cell);
    return index < 0 ? nullptr : &corners[size_t(index)];
}

void CornerLattice::retain(const std::vector<bool> &keep) {
    std::vector<LatticeCorner> kept;
    for (size_t i = 0; i < corners.size(); i++) {
        indices_[slotOf(corners[i].cell)] = -1;
        if (keep[i]) {
            kept.push_back(corners[i]);
        }
    }
    corners = std::move(kept);
    for (size_t i = 0; i < corners.size(); i++) {
        indices_[slotOf(corners[i].cell)] = int16_t(i);
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

namespace {

constexpr float farthestLink = 22;  // level pixels; the next coarser level sees longer steps
constexpr float shortestLink = 2.2F;

struct Node {
    cv::Point2f position;
    std::array<cv::Point2f, 2> border;  // directions of the light areas' borders
    float strength = 0;
    std::array<int, 4> links{-1, -1, -1, -1};  // along +border 0, +border 1, -border 0, -border 1
    bool used = false;
};

float cross(cv::Point2f a, cv::Point2f b) {
    return a.x * b.y - a.y * b.x;
}

std::vector<Node> makeNodes(const std::vector<SaddlePoint> &saddles) {
    std::vector<Node> nodes;
    nodes.reserve(saddles.size());
    for (const SaddlePoint &saddle : saddles) {
        Node node;
        node.position = saddle.position;
        node.strength = saddle.strength;
        for (size_t i = 0; i < 2; i++) {
            const float angle = saddle.brightAxis + (i == 0 ? -saddle.halfOpening : saddle.halfOpening);
            node.border[i] = {std::cos(angle), std::sin(angle)};
        }
        nodes.push_back(node);
    }
    return nodes;
}

// Neighbouring corners of a checkerboard have the same two borders with light and dark exchanged.
bool alternate(const Node &p, const Node &q) {
    constexpr float tolerance = 0.36F;  // sine
    return std::abs(cross(p.border[0], q.border[1])) < tolerance &&
           std::abs(cross(p.border[1], q.border[0])) < tolerance && q.strength < 4 * p.strength &&
           p.strength < 4 * q.strength;
}

// For every node and direction the closest node that alternates with it.
void link(std::vector<Node> &nodes, const cv::Size &size) {
    constexpr int cell = 8;
    const int columns = size.width / cell + 1;
    const int rows = size.height / cell + 1;
    std::vector<int> first(size_t(columns) * size_t(rows), -1);
    std::vector<int> next(nodes.size(), -1);
    const auto cellSlot = [&](int x, int y) { return size_t(y) * size_t(columns) + size_t(x); };
    const auto cellOf = [&](float v, int count) { return std::clamp(int(v) / cell, 0, count - 1); };
    for (size_t i = 0; i < nodes.size(); i++) {
        int &head = first[cellSlot(cellOf(nodes[i].position.x, columns), cellOf(nodes[i].position.y, rows))];
        next[i] = head;
        head = int(i);
    }
    for (size_t i = 0; i < nodes.size(); i++) {
        Node &p = nodes[i];
        std::array<float, 4> closest{};
        closest.fill(farthestLink * farthestLink);
        const int x0 = cellOf(p.position.x - farthestLink, columns);
        const int x1 = cellOf(p.position.x + farthestLink, columns);
        const int y0 = cellOf(p.position.y - farthestLink, rows);
        const int y1 = cellOf(p.position.y + farthestLink, rows);
        for (int cy = y0; cy <= y1; cy++) {
            for (int cx = x0; cx <= x1; cx++) {
                for (int k = first[cellSlot(cx, cy)]; k >= 0; k = next[size_t(k)]) {
                    const Node &q = nodes[size_t(k)];
                    const cv::Point2f d = q.position - p.position;
                    // Squares of lengths: most pairs are sorted out here.
                    const float distance = d.dot(d);
                    if (distance < shortestLink * shortestLink || distance >= farthestLink * farthestLink) {
                        continue;
                    }
                    for (size_t axis = 0; axis < 2; axis++) {
                        const float aside = cross(p.border[axis], d);
                        if (aside * aside > 0.26F * 0.26F * distance) {
                            continue;
                        }
                        const size_t slot = p.border[axis].dot(d) > 0 ? axis : axis + 2;
                        if (distance < closest[slot] && alternate(p, q)) {
                            closest[slot] = distance;
                            p.links[slot] = k;
                        }
                    }
                }
            }
        }
    }
    // Only links that both ends agree on are kept.
    std::vector<std::array<int, 4>> mutual(nodes.size());
    for (size_t i = 0; i < nodes.size(); i++) {
        for (size_t slot = 0; slot < 4; slot++) {
            const int k = nodes[i].links[slot];
            mutual[i][slot] = -1;
            if (k >= 0) {
                const auto &back = nodes[size_t(k)].links;
                if (std::find(back.begin(), back.end(), int(i)) != back.end()) {
                    mutual[i][slot] = k;
                }
            }
        }
    }
    for (size_t i = 0; i < nodes.size(); i++) {
        nodes[i].links = mutual[i];
    }
}

struct Placed {
    size_t node = 0;
    cv::Point cell;
    std::array<cv::Point2f, 2> axes;  // where column and row steps point at this node
    bool swapped = false;             // axis 0 lies along border 1
};

// Follows the links from node to node and gives every one its cell.
class LatticeGrowth {
public:
    explicit LatticeGrowth(std::vector<Node> &nodes) : nodes_(nodes) {}

    // False when the seed and its neighbours do not make a closed square.
    bool start(size_t seed);
    void grow();
    CornerLattice finish(const ImageLevel &level);

private:
    Placed neighbour(const Placed &from, size_t slot) const;
    bool place(const Placed &placed);
    void dropContradictions();

    std::vector<Node> &nodes_;
    CornerLattice lattice_;
    std::vector<Placed> placed_;  // in the order of lattice_.corners
};

Placed LatticeGrowth::neighbour(const Placed &from, size_t slot) const {
    const Node &here = nodes_[from.node];
    Placed to;
    to.node = size_t(here.links[slot]);
    const Node &there = nodes_[to.node];
    const size_t axis = from.swapped ? 1 - slot % 2 : slot % 2;
    const int sign = from.axes[axis].dot(there.position - here.position) > 0 ? 1 : -1;
    to.cell = from.cell + (axis == 0 ? cv::Point(sign, 0) : cv::Point(0, sign));
    to.swapped = !from.swapped;
    for (size_t i = 0; i < 2; i++) {
        const cv::Point2f along = there.border[to.swapped ? 1 - i : i];
        to.axes[i] = along.dot(from.axes[i]) > 0 ? along : -along;
    }
    return to;
}

bool LatticeGrowth::place(const Placed &placed) {
    Node &node = nodes_[placed.node];
    if (node.used || !lattice_.add({placed.cell, node.position, node.strength})) {
        return false;
    }
    node.used = true;
    placed_.push_back(placed);
    return true;
}

bool LatticeGrowth::start(size_t seed) {
    // Clockwise from border 0 to border 1 the area is light, so the seed's first square is.
    Placed first;
    first.node = seed;
    first.axes = nodes_[seed].border;
    lattice_.originLight = true;
    const auto &links = nodes_[seed].links;
    for (size_t slot = 0; slot < 4; slot++) {
        const size_t second = (slot + 1) % 4;
        if (links[slot] < 0 || links[second] < 0) {
            continue;
        }
        const Placed a = neighbour(first, slot);
        const Placed b = neighbour(first, second);
        for (size_t s = 0; s < 4; s++) {
            const int k = nodes_[a.node].links[s];
            const auto &others = nodes_[b.node].links;
            if (k < 0 || size_t(k) == seed || std::find(others.begin(), others.end(), k) == others.end()) {
                continue;
            }
            const Placed opposite = neighbour(a, s);
            const cv::Point2f gap = nodes_[seed].position + nodes_[opposite.node].position - nodes_[a.node].position -
                                    nodes_[b.node].position;
            const float step = std::min(length(nodes_[a.node].position - nodes_[seed].position),
                                        length(nodes_[b.node].position - nodes_[seed].position));
            if (a.cell + b.cell != opposite.cell || length(gap) > 0.35F * step || nodes_[a.node].used ||
                nodes_[b.node].used || nodes_[opposite.node].used) {
                continue;
            }
            return place(first) && place(a) && place(b) && place(opposite);
        }
    }
    return false;
}

void LatticeGrowth::grow() {
    // The list grows as it is gone through.
    size_t done = 0;
    while (done < placed_.size()) {
        const Placed from = placed_[done++];
        for (size_t slot = 0; slot < 4; slot++) {
            const int k = nodes_[from.node].links[slot];
            if (k < 0 || nodes_[size_t(k)].used) {
                continue;
            }
            const Placed to = neighbour(from, slot);
            const cv::Point2f position = nodes_[to.node].position;
            cv::Point2f expected;
            if (lattice_.predict(to.cell, expected) &&
                length(expected - position) < 0.28F * length(position - nodes_[from.node].position)) {
                place(to);
            }
        }
    }
    dropContradictions();
}

// A link whose ends are not neighbours in the lattice speaks against both of them.
void LatticeGrowth::dropContradictions() {
    for (int round = 0; round < 4; round++) {
        std::vector<int> cornerOf(nodes_.size(), -1);
        for (size_t i = 0; i < placed_.size(); i++) {
            cornerOf[placed_[i].node] = int(i);
        }
        std::vector<bool> keep(placed_.size(), true);
        bool all = true;
        for (size_t i = 0; i < placed_.size(); i++) {
            int agreeing = 0;
            int contradicting = 0;
            for (const int k : nodes_[placed_[i].node].links) {
                const int other = k < 0 ? -1 : cornerOf[size_t(k)];
                if (other >= 0) {
                    const cv::Point d = placed_[size_t(other)].cell - placed_[i].cell;
                    (std::abs(d.x) + std::abs(d.y) == 1 ? agreeing : contradicting)++;
                }
            }
            keep[i] = agreeing > contradicting;
            all = all && keep[i];
        }
        if (all) {
            return;
        }
        std::vector<Placed> kept;
        for (size_t i = 0; i < placed_.size(); i++) {
            if (keep[i]) {
                kept.push_back(placed_[i]);
            }
        }
        placed_ = std::move(kept);
        lattice_.retain(keep);
    }
}

CornerLattice LatticeGrowth::finish(const ImageLevel &level) {
    for (LatticeCorner &corner : lattice_.corners) {
        corner.position = level.toImage(corner.position);
    }
    return std::move(lattice_);
}

}  // namespace

std::vector<CornerLattice> linkLattices(const ImageLevel &level, const std::vector<SaddlePoint> &saddles,
                                        size_t leastCorners) {
    std::vector<Node> nodes = makeNodes(saddles);
    link(nodes, level.picture.size());
    std::vector<size_t> order;
    std::vector<int> linkCount(nodes.size(), 0);
    for (size_t i = 0; i < nodes.size(); i++) {
        linkCount[i] = int(std::count_if(nodes[i].links.begin(), nodes[i].links.end(), [](int k) { return k >= 0; }));
        if (linkCount[i] >= 2) {
            order.push_back(i);
        }
    }
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return linkCount[a] != linkCount[b] ? linkCount[a] > linkCount[b] : nodes[a].strength > nodes[b].strength;
    });
    std::vector<CornerLattice> lattices;
    for (const size_t seed : order) {
        if (nodes[seed].used) {
            continue;
        }
        LatticeGrowth growth(nodes);
        if (!growth.start(seed)) {
            continue;
        }
        growth.grow();
        CornerLattice lattice = growth.finish(level);
        if (lattice.corners.size() >= leastCorners) {
            lattices.push_back(std::move(lattice));
        }
    }
    std::sort(lattices.begin(), lattices.end(),
              [](const CornerLattice &a, const CornerLattice &b) { return a.corners.size() > b.corners.size(); });
    return lattices;
}

namespace {

// The level in which a lattice step is closest to between 6 and 12 pixels.
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

// Light minus dark across the border between two neighbouring corners; negative when the colours are exchanged.
float borderContrast(const ImageLevel &level, const CornerLattice &lattice, const LatticeCorner &from,
                     const LatticeCorner &to) {
    const cv::Point step = to.cell - from.cell;
    const cv::Point2f a = level.fromImage(from.position);
    const cv::Point2f b = level.fromImage(to.position);
    const cv::Point2f across = cv::Point2f(a.y - b.y, b.x - a.x) * 0.22F;
    const cv::Point2f middle = (a + b) / 2;
    // Clockwise of the step lies the square whose top-left corner is, by step direction, one of these.
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

// Whether the saddle's light area lies where the lattice has light squares at that corner.
bool hasPolarity(const CornerLattice &lattice, cv::Point cell, cv::Point2f axis0, cv::Point2f axis1,
                 const SaddlePoint &saddle) {
    const cv::Point2f bright(std::cos(saddle.brightAxis), std::sin(saddle.brightAxis));
    // The light axis lies between axis 0 and axis 1 when it is on opposite sides of them.
    const bool between = cross(axis0, bright) * cross(bright, axis1) > 0;
    return between == lattice.isLight(cell);
}

bool findCorner(const CornerLattice &lattice, cv::Point cell, const std::vector<ImageLevel> &levels,
                LatticeCorner &found) {
    cv::Point2f expected;
    if (!lattice.predict(cell, expected)) {
        return false;
    }
    float spacing = 0;
    float contrast = 0;
    int neighbours = 0;
    std::array<cv::Point2f, 2> axes;
    for (const cv::Point step : steps()) {
        const LatticeCorner *one = lattice.at(cell + step);
        if (one == nullptr) {
            continue;
        }
        const cv::Point2f d = (one->position - expected) * float(step.x + step.y);
        axes[step.x != 0 ? 0 : 1] = d;
        const float distance = std::max(length(d), lattice.spacingAt(one->cell));
        spacing = neighbours == 0 ? distance : std::min(spacing, distance);
        neighbours++;
    }
    if (neighbours == 0 || spacing < 2) {
        return false;
    }
    const ImageLevel &level = levelFor(levels, spacing);
    const cv::Point2f near = level.fromImage(expected);
    const float levelSpacing = spacing / level.scale();
    if (near.x < 3 || near.y < 3 || near.x > float(level.smoothed.cols) - 4 ||
        near.y > float(level.smoothed.rows) - 4) {
        return false;
    }
    const int radius = std::clamp(int(0.25F * levelSpacing), 1, 3);
    SaddlePoint saddle;
    if (!locateSaddle(level, cv::Point2f(strongestNear(level.smoothed, near, radius)), 1.6F, saddle) ||
        length(saddle.position - near) > 0.3F * levelSpacing) {
        return false;
    }
    found = {cell, level.toImage(saddle.position), saddle.strength};
    // With one axis known the other follows from the colours; with both they must agree.
    if (length(axes[0]) > 0 && length(axes[1]) > 0 && !hasPolarity(lattice, cell, axes[0], axes[1], saddle)) {
        return false;
    }
    for (const cv::Point step : steps()) {
        const LatticeCorner *one = lattice.at(cell + step);
        if (one == nullptr) {
            continue;
        }
        const float seen = borderContrast(level, lattice, *one, found);
        // The border behind the neighbour, already accepted, says how much contrast to expect.
        const LatticeCorner *two = lattice.at(cell + 2 * step);
        const float usual = two == nullptr ? 0 : borderContrast(level, lattice, *two, *one);
        if (seen < std::max(3.0F, 0.3F * usual)) {
            return false;
        }
        contrast += seen;
    }
    return contrast > 0;
}

void dropOutliers(CornerLattice &lattice) {
    std::vector<bool> keep(lattice.corners.size(), true);
    bool all = true;
    for (size_t i = 0; i < lattice.corners.size(); i++) {
        const LatticeCorner &corner = lattice.corners[i];
        cv::Point2f expected;
        const float spacing = lattice.spacingAt(corner.cell);
        if (spacing == 0 ||
            (lattice.interpolate(corner.cell, expected) && length(expected - corner.position) > 0.3F * spacing)) {
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
    // A cell that failed is tried again only when it gets another neighbour.
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
