// Every window of the position code, for finding some by what is in them: those with a given 5 x 5 square, at
// once; and those not too unlike an 8 x 8 square, by comparing them all.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "camera_library/pattern_code/bit_grid.h"
#include "camera_library/pattern_code/position_code.h"

namespace pattern_code {

/** The plane or a tile. */
struct CodeGrid {
    int tile;          // CodePlace::plane or a tile
    BitGrid bits;      // 0 where no position is carried
    BitGrid position;  // which squares carry position
};

/** Part of a patch that was seen: as BitGrid::window, the bits and which of them are known. */
struct SeenWindow {
    std::uint64_t bits = 0;
    std::uint64_t known = 0;
};

class WindowTable {
public:
    static constexpr int keySide = 5;
    static constexpr int scanSide = 8;
    static constexpr std::uint64_t keyMask = 0x1F1F1F1F1FU;

    /** Called with a grid and the square of it that the window's top left one is. */
    using Visit = std::function<void(const CodeGrid &, Square)>;

    WindowTable();

    /** Visits every 5 x 5 window whose position bits are those given. */
    void visitEqual(std::uint64_t bits, const Visit &visit) const;

    /**
     * Visits 8 x 8 windows with few disagreeing bits, so few that only about 100 of random ones would do. The
     * window's known squares must all be inside the plane; a tile's may reach out of it by 4.
     */
    void visitAlike(const SeenWindow &seen, const Visit &visit) const;

private:
    struct Window {
        std::uint64_t bits;
        std::uint64_t position;
        std::int16_t grid;
        std::int16_t column;
        std::int16_t row;
    };

    void visitAlikeInPlane(const SeenWindow &seen, int limit, const Visit &visit) const;

    std::vector<CodeGrid> grids_;         // the plane first
    std::vector<Window> keyWindows_;      // of 5 x 5
    std::vector<Window> tileWindows_;     // of 8 x 8
    std::vector<std::int32_t> keySlots_;  // numbers of keyWindows_ by a hash, -1 where there is none
};

/** The logarithm of the chance that of so many random bits at most so many disagree. */
double chanceLog10(int count, int disagreeing);

/** The number of places and orientations there are, those counted that a patch reaches over the edge of. */
constexpr double placeCount = 4.0 * (planeSide * planeSide + tileCount * 31 * 31);

}  // namespace pattern_code
