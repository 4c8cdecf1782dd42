// Tests that the bits of the position code have not changed, and which part of the plane a pattern covers.
#include "camera_library/pattern_code/position_code.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

namespace {

using namespace pattern_code;

// Adds the bits of one row of squares to an FNV-1a hash: 8 squares per byte, the leftmost one in the highest bit.
template <typename Bit>
void addRow(std::uint64_t &hash, int squares, const Bit &bit) {
    for (int first = 0; first < squares; first += 8) {
        std::uint64_t byte = 0;
        for (int column = first; column < first + 8; ++column) {
            byte = byte << 1U | (bit(column) ? 1U : 0U);
        }
        hash = (hash ^ byte) * 0x100000001b3U;
    }
}

// Printed patterns cannot be changed, so the bits must not change either. The program tools/generate_position_code
// makes exactly these bits in every run. The bits keep the distances between windows that docs/pattern-code.md
// guarantees.
TEST(PositionCode, isThatOfVersionOne) {
    EXPECT_EQ(patternVersion, 1);
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (int row = 0; row < planeSide; ++row) {
        addRow(hash, planeSide, [row](int column) { return planeBit(column, row); });
    }
    for (int tile = 0; tile < tileCount; ++tile) {
        for (int row = 0; row < tileSide; ++row) {
            addRow(hash, tileSide, [tile, row](int column) { return tileBit(tile, column, row); });
        }
    }
    EXPECT_EQ(hash, 0x03D3B700E2F72144U);
}

struct WindowCase {
    int width, height, offsetX, offsetY;
    std::optional<Square> expected;
};

TEST(PlaneWindowForPattern, putsTheCentralCornerAtTheOffset) {
    // Along each axis, 136 + offset squares of the plane lie before the central corner. Of these, i + 1 squares belong
    // to the pattern, where i is the index of the central corner. So the pattern begins at square 135 + offset - i. The
    // index i is 7 if there are 15 corners along an axis, and 1 if there are 4. LmCalTab's form offers up to 91 corners
    // along an axis, and offsets from -90 to 90, and all of these must fit into the plane.
    const WindowCase cases[] = {
        {15, 15, 3, -5, Square{131, 123}}, {4, 5, 0, 0, Square{134, 133}},     {2, 2, -90, 90, Square{45, 225}},
        {91, 91, -90, 90, Square{0, 180}}, {90, 91, -90, 90, Square{1, 180}},  {91, 91, -91, 0, std::nullopt},
        {91, 91, 0, 91, std::nullopt},     {200, 200, -36, 35, Square{0, 71}}, {200, 200, -37, 0, std::nullopt},
        {271, 271, 0, 0, Square{0, 0}},    {272, 5, 0, 0, std::nullopt},
    };
    for (const WindowCase &each : cases) {
        EXPECT_EQ(planeWindowForPattern(each.width, each.height, each.offsetX, each.offsetY), each.expected)
            << each.width << " x " << each.height << " at " << each.offsetX << ", " << each.offsetY;
    }
}

}  // namespace
