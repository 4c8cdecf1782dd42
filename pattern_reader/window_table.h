// Holds all windows of the position code and searches them by their bits. A hash table finds the 5 x 5 windows that
// equal a given one. To find the 8 x 8 windows that resemble a given one, the given window is compared with every 8 x 8
// window. Windows are held only in the orientation of the code. The caller does not know how the camera was turned, so
// it searches four times, once with the seen bits in each of the four orientations.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "camera_library/pattern_code/position_code.h"
#include "pattern_reader/bit_grid.h"

namespace pattern_reader {

using pattern_code::Square;

// The plane or a tile.
struct CodeGrid {
    int tile;          // CodePlace::plane or a tile
    BitGrid bits;      // 0 if the square has no bit of the position code
    BitGrid position;  // 1 if the square has a bit of the position code
};

// A window of the squares that were seen in the picture: their bits, and a mask of the bits that are known. Both are
// ordered as in BitGrid::window.
struct SeenWindow {
    std::uint64_t bits = 0;
    std::uint64_t known = 0;
};

class WindowTable {
public:
    static constexpr int keySide = 5;
    static constexpr int scanSide = 8;
    static constexpr std::uint64_t keyMask = 0x1F1F1F1F1FU;

    // Called with a grid and the window's top left square in it.
    using Visit = std::function<void(const CodeGrid &, Square)>;

    WindowTable();

    // Visits every 5 x 5 window whose position bits agree with `bits`.
    void visitEqual(std::uint64_t bits, const Visit &visit) const;

    // Visits the 8 x 8 windows in which few bits disagree with `seen`. The allowed number depends on how many bits are
    // compared. It is chosen so that, if the seen bits are random, the searches in all four orientations together make
    // at most about 100 visits on average. In the plane, only windows whose top left square lies inside the plane are
    // searched. Known squares beyond the plane's edge are compared with 0, so a window that reaches over the edge is
    // not found reliably. On a tile, the window's top left square may lie anywhere inside the tile, or up to 4 squares
    // beyond the tile's left and top edges. Squares outside the tile are not compared.
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

    std::vector<CodeGrid> grids;         // the plane first
    std::vector<Window> keyWindows;      // of 5 x 5
    std::vector<Window> tileWindows;     // of 8 x 8
    std::vector<std::int32_t> keySlots;  // indices into keyWindows by hash; -1 if the slot is free
};

// log10 of the chance that at most `disagreeing` of `count` random bits disagree.
double chanceLog10(int count, int disagreeing);

// The number of places where the seen squares can lie, in the plane and on the tiles, in all four orientations. Places
// where the seen squares reach over an edge of the plane or of a tile are counted, too.
constexpr double placeCount =
    4.0 * (pattern_code::planeSide * pattern_code::planeSide + pattern_code::tileCount * 31 * 31);

}  // namespace pattern_reader
