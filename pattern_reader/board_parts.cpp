#include "pattern_reader/board_parts.h"

#include <algorithm>
#include <utility>

#include "pattern_reader/lattice_pieces.h"

namespace pattern_reader {

namespace {

// Returns the reading's corners as a lattice. The cell of a corner is its place in the plane or tile of the position
// code.
CornerLattice latticeOf(const PatternReading &reading) {
    CornerLattice lattice;
    lattice.originLight = !reading.evenSquaresDark;
    for (const PatternCorner &corner : reading.corners) {
        lattice.add({corner.lattice, corner.image});
    }
    return lattice;
}

// True if the part belongs to the board. Most of the corners that both have must be at the same place in the picture.
// If they share no corner, the part must continue the board.
bool areParts(const CornerLattice &board, const CornerLattice &part) {
    constexpr float samePlace = 0.3F;  // lattice steps
    int same = 0;
    int apart = 0;
    for (const LatticeCorner &corner : part.corners) {
        const LatticeCorner *shared = board.at(corner.cell);
        if (shared != nullptr) {
            const std::optional<LatticeSteps> steps = part.stepsAt(corner.cell);
            (steps && steps->count(shared->position - corner.position) <= samePlace ? same : apart)++;
        }
    }
    return same + apart > 0 ? same > apart : continues(board, part);
}

bool mayBeParts(const PatternReading &a, const PatternReading &b) {
    return a.kind == b.kind && (a.kind == PatternKind::Plane || a.kind == PatternKind::Tile) && a.tile == b.tile &&
           a.evenSquaresDark == b.evenSquaresDark;
}

void addMissing(PatternReading &board, const PatternReading &part) {
    const CornerLattice lattice = latticeOf(board);
    std::copy_if(part.corners.begin(), part.corners.end(), std::back_inserter(board.corners),
                 [&](const PatternCorner &corner) { return lattice.indexAt(corner.lattice) < 0; });
    std::sort(board.corners.begin(), board.corners.end(), [](const PatternCorner &a, const PatternCorner &b) {
        return a.lattice.y != b.lattice.y ? a.lattice.y < b.lattice.y : a.lattice.x < b.lattice.x;
    });
}

// Reads the corners of the board and of the part together. If that fails, or gives another pattern or fewer corners
// than the board already has, the board's reading is kept, and the corners that only the part has are added to it.
PatternReading join(const PatternReading &board, const PatternReading &part, const ReadLattice &read) {
    CornerLattice both = latticeOf(board);
    for (const PatternCorner &corner : part.corners) {
        both.add({corner.lattice, corner.image});
    }
    std::optional<PatternReading> joined = read(both);
    if (joined && mayBeParts(*joined, board) && joined->corners.size() >= board.corners.size()) {
        return std::move(*joined);
    }
    PatternReading kept = board;
    addMissing(kept, part);
    return kept;
}

}  // namespace

void joinParts(std::vector<PatternReading> &readings, const ReadLattice &read) {
    std::sort(readings.begin(), readings.end(),
              [](const PatternReading &a, const PatternReading &b) { return a.corners.size() > b.corners.size(); });
    for (size_t i = 0; i < readings.size(); i++) {
        for (size_t k = i + 1; k < readings.size();) {
            if (!mayBeParts(readings[i], readings[k]) || !areParts(latticeOf(readings[i]), latticeOf(readings[k]))) {
                k++;
                continue;
            }
            readings[i] = join(readings[i], readings[k], read);
            readings.erase(readings.begin() + std::ptrdiff_t(k));
            // The joined board is larger, so it may now reach parts that it did not reach before.
            k = i + 1;
        }
    }
}

}  // namespace pattern_reader
