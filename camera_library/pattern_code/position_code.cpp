#include "camera_library/pattern_code/position_code.h"

#include <cassert>
#include <cstdint>

namespace pattern_code {
namespace {

// Rows of bits. The leftmost square of a row is the highest bit of the row's first word.
constexpr int wordBits = 16;
constexpr std::uint16_t planeRows[planeSide][planeSide / wordBits] = {
#include "camera_library/pattern_code/position_code_plane.inc"
};
constexpr std::uint16_t tileRows[tileCount][tileSide] = {
#include "camera_library/pattern_code/position_code_tiles.inc"
};

bool bitOf(std::uint16_t word, int column) {
    return ((word >> (wordBits - 1 - column % wordBits)) & 1) != 0;
}

// Returns the index of the central corner, counted from 0. If the count is even, this is the corner before the middle.
int centralCorner(int count) {
    return (count - 1) / 2;
}

}  // namespace

bool planeBit(int column, int row) {
    assert(column >= 0 && column < planeSide && row >= 0 && row < planeSide);
    return bitOf(planeRows[row][column / wordBits], column);
}

bool tileBit(int tile, int column, int row) {
    assert(tile >= 0 && tile < tileCount && column >= 0 && column < tileSide && row >= 0 && row < tileSide);
    return bitOf(tileRows[tile][row], column);
}

OffsetRange offsetRangeForCorners(int count) {
    // `first` is the column or row of the plane at which the pattern begins if the offset is 0. The central corner then
    // lies on planeOrigin. The squares 0 to centralCorner(count) of the pattern lie before this corner.
    const int first = planeOrigin - 1 - centralCorner(count);
    return {-first, planeSide - (count + 1) - first};
}

std::optional<Square> planeWindowForPattern(int width, int height, int offsetX, int offsetY) {
    const OffsetRange x = offsetRangeForCorners(width);
    const OffsetRange y = offsetRangeForCorners(height);
    if (offsetX < x.least || offsetX > x.greatest || offsetY < y.least || offsetY > y.greatest) {
        return std::nullopt;
    }
    return Square{offsetX - x.least, offsetY - y.least};
}

}  // namespace pattern_code
