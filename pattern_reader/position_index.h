// Finds which part of the position code (camera_library/pattern_code/position_code.h) a patch of squares shows: the
// tile or the place in the plane, and the orientation. It works only on bits: it does not look at pictures, and it
// ignores the information block.
//
// The local lattice. The patch is a rectangle of cells. It may be turned relative to the code by any number of quarter
//   turns, but it is not mirrored. Its columns are counted to the right and its rows downwards, like a picture's x and
//   y. A cell is 0, 1 or unknown; cells outside the pattern, or not seen clearly, should be unknown.
// Certainty. The place that is returned is the likeliest one found, but it can still be wrong. The caller must check
//   the chance that random bits match some place equally well (Location::chanceLog10), and how well the next best place
//   matches. isCertain does both.
// Threads. An index does not change after its construction and may be used from any thread. It takes about 4 MB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "camera_library/pattern_code/position_code.h"

namespace pattern_reader {

using pattern_code::Square;

class WindowTable;

constexpr std::uint8_t unknownCell = 2;

// The cells of a patch as they were seen, row by row from the top left. Each is 0, 1 or unknownCell.
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

// The place and the orientation of a local lattice in the code.
struct CodePlace {
    static constexpr int plane = -1;

    // The code's square that a local cell lies on; it may be outside the tile or plane.
    [[nodiscard]] Square squareOf(int column, int row) const;

    int tile = plane;  // 0 to tileCount - 1, or plane
    Square origin;     // the square of the local cell (0, 0)
    int turns = 0;     // quarter turns clockwise from the code's x axis to the local x axis, 0 to 3
};

bool operator==(const CodePlace &a, const CodePlace &b);

// A place, and how well the patch matches the code there. Only known cells on squares that have a bit of the position
// code are counted.
struct Location {
    CodePlace place;
    int agreeing = 0;
    int disagreeing = 0;
    // log10 of the number of places that would, on average, match at least this well if the patch consisted of random
    // bits. At -8, only one random patch in 10^8 finds such a place.
    double chanceLog10 = 0;
    // The same counts for the second best of the compared places. Both counts are 0 if there is no second place: either
    // only one place was compared, or all others were dropped because they clearly do not match.
    int runnerUpAgreeing = 0;
    int runnerUpDisagreeing = 0;
};

// True if a location can be relied upon: at most one patch of random bits in 10^8 would match equally well, at most one
// bit in six disagrees, and the next best place matches clearly worse.
bool isCertain(const Location &location);

class PositionIndex {
public:
    // How thoroughly to search.
    enum class Effort {
        Quick,  // finds patches that contain 5 x 5 known cells without an error; takes about 10 us
        Full    // if Quick is not certain, compares 8 x 8 cells with every place; takes up to about 1 ms
    };

    // Takes about 10 ms.
    PositionIndex();
    ~PositionIndex();
    PositionIndex(const PositionIndex &) = delete;
    PositionIndex &operator=(const PositionIndex &) = delete;

    // An index shared by all callers, made at the first call.
    static const PositionIndex &shared();

    // Returns the best of the compared places. Empty if no place was compared, if all places clearly do not match, or
    // if at most half of the counted cells agree at the best place.
    [[nodiscard]] std::optional<Location> locate(const SeenCells &seen, Effort effort = Effort::Full) const;

private:
    std::unique_ptr<const WindowTable> table;
};

}  // namespace pattern_reader
