#include "pattern_reader/lattice_linking.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pattern_reader {

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

float length(cv::Point2f v) {
    return std::hypot(v.x, v.y);
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

}  // namespace pattern_reader
