// Finds the place that a patch of squares was seen at: which tile or part of the plane of the position code
// (position_code.h) it is, and in which orientation. It works on bits; how they were seen is not its matter,
// and neither is what the information block says.
//
// The local lattice. The patch is a rectangle of cells in any orientation, but not mirrored: column and row
//   of the patch run like a picture's x and y, to the right and downwards. A cell is 0, 1 or unknown; cells
//   outside the pattern, or not seen clearly, should be unknown.
// How sure a place is. A place found is the likeliest one, however unlikely: look at the chance that bits
//   thrown at random would match as well anywhere (Location::chanceLog10) and at the next best place.
// Threads. After it is made an index is constant and may be used from any thread. It takes about 4 MB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "camera_library/pattern_code/position_code.h"

namespace pattern_code {

class WindowTable;

constexpr std::uint8_t unknownCell = 2;

/** What was seen: cells 0, 1 or unknownCell, row by row from the top left. */
struct SeenCells {
    SeenCells(int columns, int rows)
        : width(columns), height(rows), cells(std::size_t(columns) * std::size_t(rows), unknownCell) {}

    [[nodiscard]] std::uint8_t &at(int column, int row) { return cells[index(column, row)]; }
    [[nodiscard]] std::uint8_t at(int column, int row) const { return cells[index(column, row)]; }

    [[nodiscard]] std::size_t index(int column, int row) const {
        return std::size_t(row) * std::size_t(width) + std::size_t(column);
    }

    int width;
    int height;
    std::vector<std::uint8_t> cells;
};

/** Where and how a local lattice lies in the code. */
struct CodePlace {
    static constexpr int plane = -1;

    /** The code's square that a local cell is, which may lie outside the tile or plane. */
    [[nodiscard]] Square squareOf(int column, int row) const;

    int tile = plane;  // 0 to tileCount - 1, or plane
    Square origin;     // the square of the local cell (0, 0)
    int turns = 0;     // quarter turns clockwise from the code's x axis to the local x axis, 0 to 3
};

bool operator==(const CodePlace &a, const CodePlace &b);

/** A place and how well it matches. Only known cells on squares that carry position count. */
struct Location {
    CodePlace place;
    int agreeing = 0;
    int disagreeing = 0;
    /** Logarithm of the expected number of places that match random cells as well; -8 is 1 in 10^8. */
    double chanceLog10 = 0;
    /** The same numbers for the next best place looked at; both 0 when there was none. */
    int runnerUpAgreeing = 0;
    int runnerUpDisagreeing = 0;
};

/**
 * Whether a location may be relied upon: at most one patch of random bits in 10^8 is taken for a place, at most
 * one bit in six is wrong, and the next best place matches clearly worse.
 */
bool isCertain(const Location &location);

class PositionIndex {
public:
    /** How long to look. */
    enum class Effort {
        Quick,  // finds what has 5 x 5 known cells without an error; takes some 10 us
        Full    // where Quick is not certain, every place is compared; takes up to about 1 ms
    };

    /** Takes some 10 ms. */
    PositionIndex();
    ~PositionIndex();
    PositionIndex(const PositionIndex &) = delete;
    PositionIndex &operator=(const PositionIndex &) = delete;

    /** One for all, made at the first call. */
    static const PositionIndex &shared();

    /** The likeliest place; nothing when none was found with more cells agreeing than not. */
    [[nodiscard]] std::optional<Location> locate(const SeenCells &seen, Effort effort = Effort::Full) const;

private:
    std::unique_ptr<const WindowTable> table_;
};

}  // namespace pattern_code
