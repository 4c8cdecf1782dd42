#include "camera_library/pattern_code/position_index.h"

#include <algorithm>
#include <cmath>

#include "camera_library/pattern_code/window_table.h"

namespace pattern_code {
namespace {

constexpr int quickWindowLimit = 64;

// A cell that disagrees weighs as much as so many that agree, about what it does when one bit in twenty is seen
// wrongly.
constexpr int disagreementWeight = 4;

struct Candidate {
    CodePlace place;
    int agreeing = 0;
    int disagreeing = 0;

    [[nodiscard]] int score() const { return agreeing - disagreementWeight * disagreeing; }
};

/** The columns and rows outside of which no cell is known. */
struct Extent {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

Extent knownExtent(const SeenCells &seen) {
    int left = seen.width;
    int right = -1;
    int top = seen.height;
    int bottom = -1;
    for (int row = 0; row < seen.height; ++row) {
        for (int column = 0; column < seen.width; ++column) {
            if (seen.at(column, row) != unknownCell) {
                left = std::min(left, column);
                right = std::max(right, column);
                top = std::min(top, row);
                bottom = row;
            }
        }
    }
    return right < 0 ? Extent{} : Extent{left, top, right - left + 1, bottom - top + 1};
}

/** The known extent of a patch, turned so that its axes run like the code's. */
struct AlignedPatch {
    AlignedPatch(const SeenCells &seen, const Extent &extent, int quarterTurns)
        : turns(quarterTurns), bits(widthOf(extent, turns), heightOf(extent, turns)), known(bits) {
        const CodePlace turn{CodePlace::plane, originOf(extent), turns};
        for (int row = 0; row < extent.height; ++row) {
            for (int column = 0; column < extent.width; ++column) {
                const std::uint8_t cell = seen.at(extent.left + column, extent.top + row);
                if (cell == unknownCell) {
                    continue;
                }
                const Square to = turn.squareOf(column, row);
                known.set(to.column, to.row);
                if (cell == 1) {
                    bits.set(to.column, to.row);
                }
            }
        }
        // Where the patch's own cell (0, 0) is, which may be outside the extent.
        zero = turn.squareOf(-extent.left, -extent.top);
    }

    [[nodiscard]] SeenWindow window(int column, int row, int side) const {
        return {bits.window(column, row, side), known.window(column, row, side)};
    }

    static int widthOf(const Extent &extent, int turns) { return turns % 2 == 0 ? extent.width : extent.height; }
    static int heightOf(const Extent &extent, int turns) { return turns % 2 == 0 ? extent.height : extent.width; }

    int turns;
    BitGrid bits;
    BitGrid known;
    Square zero;

private:
    /** Where the extent's first cell comes to lie. */
    [[nodiscard]] Square originOf(const Extent &extent) const {
        return {turns == 1 || turns == 2 ? widthOf(extent, turns) - 1 : 0,
                turns == 2 || turns == 3 ? heightOf(extent, turns) - 1 : 0};
    }
};

/** The 8 x 8 window with the most known cells, the first of these. */
Square bestKnownWindow(const AlignedPatch &patch) {
    constexpr int side = WindowTable::scanSide;
    Square best;
    int bestKnown = -1;
    for (int row = 0; row <= std::max(0, patch.known.height() - side); ++row) {
        for (int column = 0; column <= std::max(0, patch.known.width() - side); ++column) {
            const int known = onesIn(patch.known.window(column, row, side));
            if (known > bestKnown) {
                bestKnown = known;
                best = {column, row};
            }
            if (known == side * side) {
                return best;
            }
        }
    }
    return best;
}

int commonFactor(int a, int b) {
    return b == 0 ? a : commonFactor(b, a % b);
}

/** Nothing for a large patch that plainly does not belong there. */
std::optional<Candidate> compared(const AlignedPatch &patch, const CodeGrid &grid, Square corner) {
    Candidate candidate;
    int known = 0;
    for (int row = 0; row < patch.known.height(); ++row) {
        for (int column = 0; column < patch.known.width(); column += 64) {
            const int codeColumn = corner.column + column;
            const int codeRow = corner.row + row;
            const std::uint64_t both = patch.known.rowBits(column, row) & grid.position.rowBits(codeColumn, codeRow);
            const std::uint64_t unlike =
                (patch.bits.rowBits(column, row) ^ grid.bits.rowBits(codeColumn, codeRow)) & both;
            known += onesIn(both);
            candidate.disagreeing += onesIn(unlike);
        }
        if (known >= 64 && candidate.disagreeing * 5 > known * 2) {
            return std::nullopt;
        }
    }
    candidate.agreeing = known - candidate.disagreeing;
    candidate.place = {grid.tile, {corner.column + patch.zero.column, corner.row + patch.zero.row}, patch.turns};
    return candidate;
}

/** One patch's search: of the places looked at closely the best two are kept. */
class PlaceSearch {
public:
    PlaceSearch(const WindowTable &table, const SeenCells &seen) : table_(table) {
        const Extent extent = knownExtent(seen);
        for (int turns = 0; turns < 4 && extent.width > 0; ++turns) {
            patches_.emplace_back(seen, extent, turns);
        }
    }

    /** Looks up 5 x 5 windows without unknown cells, spread over the patch. */
    void runQuick() {
        for (const AlignedPatch &patch : patches_) {
            const int across = patch.known.width() - WindowTable::keySide + 1;
            const int down = patch.known.height() - WindowTable::keySide + 1;
            if (across <= 0 || down <= 0) {
                return;
            }
            // A step that shares no factor with the number of windows visits each of them once.
            const int count = across * down;
            int step = std::max(1, static_cast<int>(count * 0.618));
            while (commonFactor(step, count) != 1) {
                ++step;
            }
            int windows = 0;
            for (int i = 0, at = 0; i < count && windows < quickWindowLimit; ++i, at = (at + step) % count) {
                const Square square{at % across, at / across};
                const SeenWindow window = patch.window(square.column, square.row, WindowTable::keySide);
                if (window.known == WindowTable::keyMask) {
                    ++windows;
                    table_.visitEqual(window.bits, [&](const CodeGrid &grid, Square found) {
                        consider(patch, grid, {found.column - square.column, found.row - square.row});
                    });
                }
            }
        }
    }

    /** Compares the 8 x 8 cells of which most are known with those at every place. */
    void runFull() {
        for (const AlignedPatch &patch : patches_) {
            const Square square = bestKnownWindow(patch);
            table_.visitAlike(patch.window(square.column, square.row, WindowTable::scanSide),
                              [&](const CodeGrid &grid, Square found) {
                                  consider(patch, grid, {found.column - square.column, found.row - square.row});
                              });
        }
    }

    [[nodiscard]] std::optional<Location> result() const {
        if (best_.empty() || best_[0].agreeing <= best_[0].disagreeing) {
            return std::nullopt;
        }
        Location location;
        location.place = best_[0].place;
        location.agreeing = best_[0].agreeing;
        location.disagreeing = best_[0].disagreeing;
        location.chanceLog10 =
            std::log10(placeCount) + chanceLog10(location.agreeing + location.disagreeing, location.disagreeing);
        if (best_.size() > 1) {
            location.runnerUpAgreeing = best_[1].agreeing;
            location.runnerUpDisagreeing = best_[1].disagreeing;
        }
        return location;
    }

private:
    /** Looks closely at the place that puts the aligned patch's corner on a square of the grid. */
    void consider(const AlignedPatch &patch, const CodeGrid &grid, Square corner) {
        const CodePlace place{grid.tile, {corner.column + patch.zero.column, corner.row + patch.zero.row}, patch.turns};
        if (std::any_of(best_.begin(), best_.end(), [&](const Candidate &other) { return other.place == place; })) {
            return;
        }
        const std::optional<Candidate> candidate = compared(patch, grid, corner);
        if (!candidate) {
            return;
        }
        const auto worse = std::find_if(best_.begin(), best_.end(),
                                        [&](const Candidate &other) { return other.score() < candidate->score(); });
        best_.insert(worse, *candidate);
        if (best_.size() > 2) {
            best_.pop_back();
        }
    }

    const WindowTable &table_;
    std::vector<AlignedPatch> patches_;
    std::vector<Candidate> best_;  // the best first
};

}  // namespace

bool operator==(const CodePlace &a, const CodePlace &b) {
    return a.tile == b.tile && a.origin == b.origin && a.turns == b.turns;
}

Square CodePlace::squareOf(int column, int row) const {
    switch (turns) {
        case 1:
            return {origin.column - row, origin.row + column};
        case 2:
            return {origin.column - column, origin.row - row};
        case 3:
            return {origin.column + row, origin.row - column};
        default:
            return {origin.column + column, origin.row + row};
    }
}

bool isCertain(const Location &location) {
    const int known = location.agreeing + location.disagreeing;
    const int runnerUpKnown = location.runnerUpAgreeing + location.runnerUpDisagreeing;
    const double runnerUpChance = std::log10(placeCount) + chanceLog10(runnerUpKnown, location.runnerUpDisagreeing);
    return location.chanceLog10 <= -8 && location.disagreeing * 6 <= known &&
           runnerUpChance >= location.chanceLog10 + 3;
}

PositionIndex::PositionIndex() : table_(std::make_unique<const WindowTable>()) {}

PositionIndex::~PositionIndex() = default;

const PositionIndex &PositionIndex::shared() {
    static const PositionIndex index;
    return index;
}

std::optional<Location> PositionIndex::locate(const SeenCells &seen, Effort effort) const {
    PlaceSearch search(*table_, seen);
    search.runQuick();
    const std::optional<Location> quick = search.result();
    if (effort == Effort::Quick || (quick && isCertain(*quick))) {
        return quick;
    }
    search.runFull();
    return search.result();
}

}  // namespace pattern_code
