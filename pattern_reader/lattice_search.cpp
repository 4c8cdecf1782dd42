#include "pattern_reader/lattice_search.h"

#include <algorithm>

#include "pattern_reader/lattice_completion.h"
#include "pattern_reader/lattice_linking.h"
#include "pattern_reader/lattice_pieces.h"

namespace pattern_reader {

namespace {

// Remembers where corners have been found, so that a lattice that is visible in several levels is taken only once.
class TakenCorners {
public:
    explicit TakenCorners(const cv::Size &size)
        : columns(size.width / cell + 1), taken(size_t(columns) * size_t(size.height / cell + 1), 0) {}

    // Marks the surroundings of each corner as taken, up to a third of the way to the next corner.
    void take(const CornerLattice &lattice) {
        const int rows = int(taken.size()) / columns;
        for (const LatticeCorner &corner : lattice.corners) {
            const float radius = 0.33F * lattice.spacingAt(corner.cell);
            const int x1 = std::min(columns - 1, int(corner.position.x + radius) / cell);
            const int y1 = std::min(rows - 1, int(corner.position.y + radius) / cell);
            for (int y = std::max(0, int(corner.position.y - radius) / cell); y <= y1; y++) {
                for (int x = std::max(0, int(corner.position.x - radius) / cell); x <= x1; x++) {
                    taken[size_t(y) * size_t(columns) + size_t(x)] = 1;
                }
            }
        }
    }

    // True if more than two thirds of the lattice's corners lie at places where corners have already been found.
    bool overlaps(const CornerLattice &lattice) const {
        const auto hits = std::count_if(lattice.corners.begin(), lattice.corners.end(),
                                        [&](const LatticeCorner &c) { return taken[slot(c.position)] != 0; });
        return size_t(hits) * 3 > lattice.corners.size() * 2;
    }

private:
    static constexpr int cell = 2;  // pixels
    size_t slot(cv::Point2f p) const {
        const int x = std::clamp(int(p.x) / cell, 0, columns - 1);
        const int rows = int(taken.size()) / columns;
        const int y = std::clamp(int(p.y) / cell, 0, rows - 1);
        return size_t(y) * size_t(columns) + size_t(x);
    }

    int columns;
    std::vector<char> taken;
};

}  // namespace

std::vector<CornerLattice> findLattices(const std::vector<ImageLevel> &levels, const std::vector<LevelPoints> &points) {
    TakenCorners taken(levels.front().picture.size());
    std::vector<CornerLattice> pieces;
    for (size_t i = 0; i < levels.size(); i++) {
        for (CornerLattice &lattice : linkLattices(levels[i], points[i].saddles, leastLatticeCorners)) {
            pieces.push_back(std::move(lattice));
        }
    }
    std::sort(pieces.begin(), pieces.end(),
              [](const CornerLattice &a, const CornerLattice &b) { return a.corners.size() > b.corners.size(); });
    std::vector<CornerLattice> lattices;
    for (CornerLattice &piece : pieces) {
        if (taken.overlaps(piece)) {
            continue;
        }
        completeLattice(piece, levels);
        // The piece may have grown into places that are already taken.
        if (piece.corners.size() < leastLatticeCorners || taken.overlaps(piece)) {
            continue;
        }
        taken.take(piece);
        lattices.push_back(std::move(piece));
    }
    std::sort(lattices.begin(), lattices.end(),
              [](const CornerLattice &a, const CornerLattice &b) { return a.corners.size() > b.corners.size(); });
    joinPieces(lattices, levels);
    return lattices;
}

}  // namespace pattern_reader
