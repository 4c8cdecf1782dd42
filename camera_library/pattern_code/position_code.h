// The position code: which squares of a coded checkerboard carry a mark, so that a small patch of it tells
// its place. This is the bits alone; it draws nothing, reads no picture, and knows no millimetres.
//
// Squares. Columns are counted from 0 to the right and rows from 0 downwards, as the printed pattern is
//   looked at with its number and caption upright. A lattice point (x, y) is the top left corner of the
//   square in column x, row y.
// Bits. 1 is a mark in the square's centre, 0 is none. A bit says nothing about the square's colour and the
//   colour nothing about the bit: turning a pattern's polarity over changes no bit, and every promise below
//   holds for the bits alone.
// Two kinds of grid carry bits. The plane, planeSide squares a side, is what Flexible patterns are cut out
//   of. A tile, tileSide squares a side, is one whole pattern: tile 0 is the Official and Single pattern,
//   tiles 1 to 18 are the Assembly patterns 0 to 17. A tile's squares whose column and row are both even
//   carry the information block (information_block.h), the other 192 carry position.
// Promises. No n by n window of the plane, in any of its four orientations, is closer than the distance
//   planeWindowDistance(n) to another one or to itself turned, nor to a window without or full of marks.
//   The same holds between windows of tiles, and between those and the plane's, with
//   tileWindowDistance(n), where only those squares count that carry position in both: what an information
//   block holds can make no window look like another one. Distance is the number of unlike bits.
// Threads. Everything is constant and may be used from any thread.
#pragma once

#include <optional>

namespace pattern_code {

// The version of the code; another one would have other bits.
constexpr int patternVersion = 1;

constexpr int planeSide = 272;
constexpr int tileSide = 16;
constexpr int tileCount = 19;
constexpr int singleTile = 0;
constexpr int assemblyPatternCount = tileCount - 1;

// The least distance of two windows of the plane with n squares a side, 5 to 8.
constexpr int planeWindowDistance(int n) {
    return n == 5 ? 2 : n == 6 ? 4 : n == 7 ? 8 : 12;
}

// The least distance of a window of a tile to any other one, with n squares a side, 7 or 8.
constexpr int tileWindowDistance(int n) {
    return n == 7 ? 3 : 6;
}

// The lattice point of the plane that a pattern without offset has its centre on, in x and in y.
constexpr int planeOrigin = planeSide / 2;

// The tile of an assembly's pattern, 0 to 17.
constexpr int tileOfAssemblyPattern(int pattern) {
    return pattern + 1;
}

// Whether a tile's square carries position; otherwise it carries a bit of the information block.
constexpr bool carriesPosition(int column, int row) {
    return column % 2 != 0 || row % 2 != 0;
}

// The bit of a square of the plane; column and row are 0 to planeSide - 1.
bool planeBit(int column, int row);

// The bit of a square of a tile that carries position; column and row are 0 to tileSide - 1.
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

// The plane's square that becomes the top left square of a Flexible pattern of width x height corners, so
// of (width + 1) x (height + 1) squares: the pattern's central corner (for an even count the one before the
// middle) comes to lie on the lattice point (planeOrigin + offsetX, planeOrigin + offsetY). Offsets are in
// squares, which are half grid spacings. Nothing when the pattern would reach over the plane's edge; it
// never does with offsets from -90 to 90 and up to 91 corners.
std::optional<Square> planeWindowForPattern(int width, int height, int offsetX, int offsetY);

// The offsets, from least to greatest, that planeWindowForPattern takes for a count of corners.
struct OffsetRange {
    int least = 0;
    int greatest = -1;
};
OffsetRange offsetRangeForCorners(int count);

}  // namespace pattern_code
