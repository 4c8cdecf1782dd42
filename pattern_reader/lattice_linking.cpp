#include "pattern_reader/lattice_linking.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "pattern_reader/saddle_links.h"

namespace pattern_reader {

namespace {

float length(cv::Point2f v) {
    return std::hypot(v.x, v.y);
}

struct Placed {
    size_t saddle = 0;
    cv::Point cell;
    std::array<cv::Point2f, 2> axes;  // directions of the column and row steps at this saddle
    bool swapped = false;             // true if axis 0 lies along border 1
};

// Follows the links from saddle to saddle and assigns a cell to each saddle.
class LatticeGrowth {
public:
    // `used` marks the saddles that were placed in earlier lattices. They are ignored here, and the saddles of this
    // lattice are marked too. All lattices share the vector `cornerOf`, because a new vector for each of many small
    // lattices would take time in proportion to the number of all saddles. While withoutContradiction runs, `cornerOf`
    // maps each saddle in `members` to its index there, and all other saddles to -1. At all other times, all values of
    // `cornerOf` are -1.
    LatticeGrowth(const std::vector<LinkedSaddle> &saddles, std::vector<bool> &used, std::vector<int> &cornerOf)
        : linkedSaddles(saddles), usedSaddles(used), cornerNumbers(cornerOf) {}

    // False if the seed and its neighbours do not form a closed square.
    bool start(size_t seed);
    void grow();
    CornerLattice finish(const ImageLevel &level);

private:
    Placed neighbour(const Placed &from, size_t slot) const;
    bool place(const Placed &placed);
    void dropContradictions();
    std::vector<bool> withoutContradiction();

    const std::vector<LinkedSaddle> &linkedSaddles;
    std::vector<bool> &usedSaddles;
    std::vector<int> &cornerNumbers;
    CornerLattice grown;
    std::vector<Placed> members;  // in the order of grown.corners
};

Placed LatticeGrowth::neighbour(const Placed &from, size_t slot) const {
    const LinkedSaddle &here = linkedSaddles[from.saddle];
    Placed to;
    to.saddle = size_t(here.links[slot]);
    const LinkedSaddle &there = linkedSaddles[to.saddle];
    const size_t axis = from.swapped ? 1 - slot % 2 : slot % 2;
    const int sign = from.axes[axis].dot(there.position - here.position) > 0 ? 1 : -1;
    to.cell = from.cell + (axis == 0 ? cv::Point(sign, 0) : cv::Point(0, sign));
    // Neighbouring corners have light and dark exchanged, so border 0 of one lies along border 1 of the other.
    to.swapped = !from.swapped;
    for (size_t i = 0; i < 2; i++) {
        const cv::Point2f along = there.border[to.swapped ? 1 - i : i];
        to.axes[i] = along.dot(from.axes[i]) > 0 ? along : -along;
    }
    return to;
}

bool LatticeGrowth::place(const Placed &placed) {
    const LinkedSaddle &saddle = linkedSaddles[placed.saddle];
    if (usedSaddles[placed.saddle] || !grown.add({placed.cell, saddle.position, saddle.strength})) {
        return false;
    }
    usedSaddles[placed.saddle] = true;
    members.push_back(placed);
    return true;
}

bool LatticeGrowth::start(size_t seed) {
    // The seed gets cell (0, 0), with border 0 as x axis and border 1 as y axis. The area clockwise from border 0 to
    // border 1 is light, so the square from (0, 0) to (1, 1) is light.
    Placed first;
    first.saddle = seed;
    first.axes = linkedSaddles[seed].border;
    grown.originLight = true;
    const auto &links = linkedSaddles[seed].links;
    for (size_t slot = 0; slot < 4; slot++) {
        const size_t second = (slot + 1) % 4;
        if (links[slot] < 0 || links[second] < 0) {
            continue;
        }
        const Placed a = neighbour(first, slot);
        const Placed b = neighbour(first, second);
        for (size_t s = 0; s < 4; s++) {
            const int k = linkedSaddles[a.saddle].links[s];
            const auto &others = linkedSaddles[b.saddle].links;
            if (k < 0 || size_t(k) == seed || std::find(others.begin(), others.end(), k) == others.end()) {
                continue;
            }
            const Placed opposite = neighbour(a, s);
            const cv::Point2f gap = linkedSaddles[seed].position + linkedSaddles[opposite.saddle].position -
                                    linkedSaddles[a.saddle].position - linkedSaddles[b.saddle].position;
            const float step = std::min(length(linkedSaddles[a.saddle].position - linkedSaddles[seed].position),
                                        length(linkedSaddles[b.saddle].position - linkedSaddles[seed].position));
            if (a.cell + b.cell != opposite.cell || length(gap) > 0.35F * step || usedSaddles[a.saddle] ||
                usedSaddles[b.saddle] || usedSaddles[opposite.saddle]) {
                continue;
            }
            return place(first) && place(a) && place(b) && place(opposite);
        }
    }
    return false;
}

void LatticeGrowth::grow() {
    // `place` adds to `members` during the loop.
    size_t done = 0;
    while (done < members.size()) {
        const Placed from = members[done++];
        for (size_t slot = 0; slot < 4; slot++) {
            const int k = linkedSaddles[from.saddle].links[slot];
            if (k < 0 || usedSaddles[size_t(k)]) {
                continue;
            }
            const Placed to = neighbour(from, slot);
            const cv::Point2f position = linkedSaddles[to.saddle].position;
            cv::Point2f expected;
            if (!grown.predict(to.cell, expected) ||
                length(expected - position) >= 0.28F * length(position - linkedSaddles[from.saddle].position)) {
                continue;
            }
            const std::optional<LatticeSteps> steps = grown.stepsAt(to.cell);
            if (!steps || steps->count(expected - position) < 0.3F) {
                place(to);
            }
        }
    }
    dropContradictions();
}

// Returns, for each placed saddle, true if its links mostly agree with the lattice. A link contradicts the lattice if
// its ends are not neighbours there.
std::vector<bool> LatticeGrowth::withoutContradiction() {
    for (size_t i = 0; i < members.size(); i++) {
        cornerNumbers[members[i].saddle] = int(i);
    }
    std::vector<bool> keep(members.size(), true);
    for (size_t i = 0; i < members.size(); i++) {
        int agreeing = 0;
        int contradicting = 0;
        for (const int k : linkedSaddles[members[i].saddle].links) {
            const int other = k < 0 ? -1 : cornerNumbers[size_t(k)];
            if (other >= 0) {
                const cv::Point d = members[size_t(other)].cell - members[i].cell;
                (std::abs(d.x) + std::abs(d.y) == 1 ? agreeing : contradicting)++;
            }
        }
        keep[i] = agreeing > contradicting;
    }
    for (const Placed &placed : members) {
        cornerNumbers[placed.saddle] = -1;
    }
    return keep;
}

void LatticeGrowth::dropContradictions() {
    for (int round = 0; round < 4; round++) {
        const std::vector<bool> keep = withoutContradiction();
        if (std::find(keep.begin(), keep.end(), false) == keep.end()) {
            return;
        }
        std::vector<Placed> kept;
        for (size_t i = 0; i < members.size(); i++) {
            if (keep[i]) {
                kept.push_back(members[i]);
            }
        }
        members = std::move(kept);
        grown.retain(keep);
    }
}

CornerLattice LatticeGrowth::finish(const ImageLevel &level) {
    for (LatticeCorner &corner : grown.corners) {
        corner.position = level.toImage(corner.position);
    }
    return std::move(grown);
}

// Returns the saddles that have at least two links. Those with the most links come first.
std::vector<size_t> bestSeedsFirst(const std::vector<LinkedSaddle> &saddles) {
    std::vector<size_t> order;
    std::vector<int> linkCount(saddles.size(), 0);
    for (size_t i = 0; i < saddles.size(); i++) {
        const auto &links = saddles[i].links;
        linkCount[i] = int(std::count_if(links.begin(), links.end(), [](int k) { return k >= 0; }));
        if (linkCount[i] >= 2) {
            order.push_back(i);
        }
    }
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return linkCount[a] != linkCount[b] ? linkCount[a] > linkCount[b] : saddles[a].strength > saddles[b].strength;
    });
    return order;
}

}  // namespace

std::vector<CornerLattice> linkLattices(const ImageLevel &level, const std::vector<SaddlePoint> &saddles,
                                        size_t leastCorners) {
    const std::vector<LinkedSaddle> linked = linkSaddles(saddles, level.picture.size());
    std::vector<bool> used(linked.size(), false);
    std::vector<int> cornerOf(linked.size(), -1);
    std::vector<CornerLattice> lattices;
    for (const size_t seed : bestSeedsFirst(linked)) {
        LatticeGrowth growth(linked, used, cornerOf);
        if (used[seed] || !growth.start(seed)) {
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
