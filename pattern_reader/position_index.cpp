#include "pattern_reader/position_index.h"

#include <algorithm>
#include <cmath>

#include "camera_library/pattern_code/bit_count.h"
#include "pattern_reader/window_table.h"

namespace pattern_reader {

namespace {

using pattern_code::onesIn;
using pattern_code::Square;

constexpr int quickWindowLimit = 64;

// One disagreeing cell cancels this many agreeing cells. The number is roughly right if 5 % of the bits are seen
// wrongly.
constexpr int disagreementWeight = 4;

struct Candidate {
    CodePlace place;
    int agreeing = 0;
    int disagreeing = 0;

    [[nodiscard]] int score() const { return agreeing - disagreementWeight * disagreeing; }
};

// The smallest rectangle that contains every known cell.
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

// The known extent of a patch, turned by a number of quarter turns. If the number is right, the axes of the turned
// extent run like the code's.
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
        // The position of the patch's own cell (0, 0) after turning. It may lie outside the extent.
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
    // The place of the extent's top-left cell after turning.
    [[nodiscard]] Square originOf(const Extent &extent) const {
        return {turns == 1 || turns == 2 ? widthOf(extent, turns) - 1 : 0,
                turns == 2 || turns == 3 ? heightOf(extent, turns) - 1 : 0};
    }
};

// Returns the 8 x 8 window with the most known cells; the first one if there are several.
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

// Compares every cell of the patch with the code. Stops and returns empty if at least 64 cells have been compared and
// too few of them agree.
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

// Searches for the place of one patch. Keeps the two best of the places with which it has compared the patch.
class PlaceSearch {
public:
    PlaceSearch(const WindowTable &windowTable, const SeenCells &seen) : table(windowTable) {
        const Extent extent = knownExtent(seen);
        for (int turns = 0; turns < 4 && extent.width > 0; ++turns) {
            patches.emplace_back(seen, extent, turns);
        }
    }

    // Looks up 5 x 5 windows of the patch that have no unknown cell, in an order that spreads them over the patch. At
    // most quickWindowLimit windows are looked up in each orientation.
    void runQuick() {
        for (const AlignedPatch &patch : patches) {
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
                    table.visitEqual(window.bits, [&](const CodeGrid &grid, Square found) {
                        consider(patch, grid, {found.column - square.column, found.row - square.row});
                    });
                }
            }
        }
    }

    // Takes the 8 x 8 window that has the most known cells and compares it with the code at every place.
    void runFull() {
        for (const AlignedPatch &patch : patches) {
            const Square square = bestKnownWindow(patch);
            table.visitAlike(patch.window(square.column, square.row, WindowTable::scanSide),
                             [&](const CodeGrid &grid, Square found) {
                                 consider(patch, grid, {found.column - square.column, found.row - square.row});
                             });
        }
    }

    [[nodiscard]] std::optional<Location> result() const {
        if (best.empty() || best[0].agreeing <= best[0].disagreeing) {
            return std::nullopt;
        }
        Location location;
        location.place = best[0].place;
        location.agreeing = best[0].agreeing;
        location.disagreeing = best[0].disagreeing;
        location.chanceLog10 =
            std::log10(placeCount) + chanceLog10(location.agreeing + location.disagreeing, location.disagreeing);
        if (best.size() > 1) {
            location.runnerUpAgreeing = best[1].agreeing;
            location.runnerUpDisagreeing = best[1].disagreeing;
        }
        return location;
    }

private:
    // Compares the whole patch with the code at the place where the patch's top-left cell lies on the square `corner`
    // of the grid. Keeps the place if it is one of the best two.
    void consider(const AlignedPatch &patch, const CodeGrid &grid, Square corner) {
        const CodePlace place{grid.tile, {corner.column + patch.zero.column, corner.row + patch.zero.row}, patch.turns};
        if (std::any_of(best.begin(), best.end(), [&](const Candidate &other) { return other.place == place; })) {
            return;
        }
        const std::optional<Candidate> candidate = compared(patch, grid, corner);
        if (!candidate) {
            return;
        }
        const auto worse = std::find_if(best.begin(), best.end(),
                                        [&](const Candidate &other) { return other.score() < candidate->score(); });
        best.insert(worse, *candidate);
        if (best.size() > 2) {
            best.pop_back();
        }
    }

    const WindowTable &table;
    std::vector<AlignedPatch> patches;
    std::vector<Candidate> best;  // the best first
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

PositionIndex::PositionIndex() : table(std::make_unique<const WindowTable>()) {}

PositionIndex::~PositionIndex() = default;

const PositionIndex &PositionIndex::shared() {
    static const PositionIndex index;
    return index;
}

std::optional<Location> PositionIndex::locate(const SeenCells &seen, Effort effort) const {
    PlaceSearch search(*table, seen);
    search.runQuick();
    const std::optional<Location> quick = search.result();
    if (effort == Effort::Quick || (quick && isCertain(*quick))) {
        return quick;
    }
    search.runFull();
    return search.result();
}

}  // namespace pattern_reader
