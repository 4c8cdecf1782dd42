// The position code determines which squares of a coded checkerboard carry a mark. The marks in a small visible part of
// the board are enough to find where on the board this part is. This file has only the bits: it draws nothing, reads no
// pictures and does not use millimetres.
//
// Squares. Columns are counted from 0 to the right and rows from 0 downwards, as seen on the printed pattern with its
//   caption upright. The lattice point (x, y) is the top-left corner of the square in column x, row y.
// Bits. A bit is 1 if the square has a mark in its centre, and 0 if it has none. A bit does not depend on the colour of
//   its square, so a pattern with the other polarity has the same bits.
// Grids. Two kinds of grid carry bits. The plane has planeSide x planeSide squares; Flexible patterns are cut out of
//   it. A tile has tileSide x tileSide squares and is one whole pattern: tile 0 is used for catalogue boards and
//   SingleCustom patterns, and tiles 1 to 18 are the Assembly patterns 0 to 17. The squares of a tile whose column and
//   row are both even carry the information block (information_block.h); the other 192 carry the position code.
// Distances. The distance of two windows is the number of bits in which they differ. Take an n by n window of the
//   plane in any of its four orientations. Its distance is at least planeWindowDistance(n) to every other window of the
//   plane, to its own rotations, to a window with no marks and to a window with a mark in every square. If one or both
//   windows belong to tiles, the least distance is tileWindowDistance(n). In this case, only the squares that carry the
//   position code in both windows are compared, so no content of an information block can make one place look like
//   another.
// Threads. Everything is constant and may be used from any thread.
#pragma once

#include <optional>

namespace pattern_code {

// The version of the position code. Another version would have other bits.
constexpr int patternVersion = 1;

constexpr int planeSide = 272;
constexpr int tileSide = 16;
constexpr int tileCount = 19;
constexpr int singleTile = 0;
constexpr int assemblyPatternCount = tileCount - 1;

// Returns the least distance between two windows of the plane. Each window has n x n squares; n is 5 to 8.
constexpr int planeWindowDistance(int n) {
    return n == 5 ? 2 : n == 6 ? 4 : n == 7 ? 8 : 12;
}

// Returns the least distance between a window of a tile and any other window. Each has n x n squares; n is 7 or 8.
constexpr int tileWindowDistance(int n) {
    return n == 7 ? 3 : 6;
}

// A pattern with the offset 0, 0 has its central corner on the plane's lattice point (planeOrigin, planeOrigin).
constexpr int planeOrigin = planeSide / 2;

// Returns the tile that carries a pattern of an assembly. The patterns are counted from 0 to 17.
constexpr int tileOfAssemblyPattern(int pattern) {
    return pattern + 1;
}

// True if a tile's square carries the position code; otherwise it carries a bit of the information block.
constexpr bool carriesPosition(int column, int row) {
    return column % 2 != 0 || row % 2 != 0;
}

// Returns the bit of a square of the plane; column and row are 0 to planeSide - 1.
bool planeBit(int column, int row);

// Returns the position bit of a square of a tile. The square must carry the position code. Column and row are 0 to
// tileSide - 1.
bool tileBit(int tile, int column, int row);

// A square, or a lattice point, of the plane or of a tile.
struct Square {
    int column = 0;
    int row = 0;
};

inline bool operator==(Square a, Square b) {
    return a.column == b.column && a.row == b.row;
}
inline bool operator!=(Square a, Square b) {
    return !(a == b);
}

// Returns the square of the plane that becomes the top-left square of a Flexible pattern with width x height corners,
// that is (width + 1) x (height + 1) squares. The central corner of the pattern lies on the lattice point
// (planeOrigin + offsetX, planeOrigin + offsetY). If the width or the height is even, the central corner is the one
// before the middle. Offsets are counted in squares; the side of a square is half the grid spacing. The result is empty
// if the pattern would reach beyond the edge of the plane. That cannot happen with offsets from -90 to 90 and up to
// 91 corners.
std::optional<Square> planeWindowForPattern(int width, int height, int offsetX, int offsetY);

// The range of offsets along one axis that planeWindowForPattern accepts. It depends on the number of corners along
// this axis.
struct OffsetRange {
    int least = 0;
    int greatest = -1;
};
OffsetRange offsetRangeForCorners(int count);

}  // namespace pattern_code
