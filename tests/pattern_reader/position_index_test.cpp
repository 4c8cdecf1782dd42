#include "pattern_reader/position_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

namespace pattern_reader {

namespace {

using pattern_code::carriesPosition;
using pattern_code::planeBit;
using pattern_code::planeSide;
using pattern_code::tileBit;
using pattern_code::tileCount;
using pattern_code::tileSide;

struct Damage {
    int wrongPercent = 0;
    int unknownPercent = 0;
};

// Makes patches of the code as a camera might see them: turned, with wrong and unknown bits. The squares of an
// information block have random bits.
class PatchMaker {
public:
    // Returns a patch of the plane or of a tile at a random place, and sets `place` to this place.
    SeenCells make(bool ofPlane, int width, int height, Damage damage) {
        const int side = ofPlane ? planeSide : tileSide;
        place.tile = ofPlane ? CodePlace::plane : below(tileCount);
        place.turns = below(4);
        const bool isAcross = place.turns % 2 != 0;
        const int across = isAcross ? height : width;
        const int down = isAcross ? width : height;
        const int left = below(side - across + 1);
        const int top = below(side - down + 1);
        place.origin = {place.turns == 1 || place.turns == 2 ? left + across - 1 : left,
                        place.turns >= 2 ? top + down - 1 : top};
        SeenCells seen(width, height);
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                seen.at(column, row) = cell(place.squareOf(column, row), damage);
            }
        }
        return seen;
    }

    std::uint8_t cell(Square square, Damage damage) {
        const bool isPlane = place.tile == CodePlace::plane;
        bool bit = below(2) != 0;
        if (isPlane) {
            bit = planeBit(square.column, square.row);
        } else if (carriesPosition(square.column, square.row)) {
            bit = tileBit(place.tile, square.column, square.row);
        }
        const bool isWrong = below(100) < damage.wrongPercent;
        return below(100) < damage.unknownPercent ? unknownCell : bit != isWrong ? 1 : 0;
    }

    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

    CodePlace place;  // of the last patch

private:
    std::mt19937_64 random{17};
};

struct LocateCase {
    const char *name;
    bool ofPlane;
    int width, height;
    Damage damage;
    PositionIndex::Effort effort;
    int leastCertain;  // of 200 patches, at least this many must be located with certainty
};

class Locate : public testing::TestWithParam<LocateCase> {};

TEST_P(Locate, findsTheTruePlaceAndIsNeverCertainOfAWrongPlace) {
    const LocateCase &each = GetParam();
    PatchMaker maker;
    int certain = 0;
    for (int i = 0; i < 200; ++i) {
        const SeenCells seen = maker.make(each.ofPlane, each.width, each.height, each.damage);
        const std::optional<Location> location = PositionIndex::shared().locate(seen, each.effort);
        if (location && isCertain(*location)) {
            ASSERT_EQ(location->place, maker.place);
            ++certain;
        }
    }
    EXPECT_GE(certain, each.leastCertain);
}

constexpr auto quick = PositionIndex::Effort::Quick;
constexpr auto full = PositionIndex::Effort::Full;

INSTANTIATE_TEST_SUITE_P(Patches, Locate,
                         testing::Values(LocateCase{"plane7Clean", true, 7, 7, {0, 0}, quick, 200},
                                         LocateCase{"plane6x12Clean", true, 6, 12, {0, 0}, quick, 200},
                                         LocateCase{"plane8Damaged", true, 8, 8, {3, 2}, full, 160},
                                         LocateCase{"plane16Quick", true, 16, 16, {5, 5}, quick, 180},
                                         LocateCase{"plane12Hard", true, 12, 12, {10, 10}, full, 180},
                                         LocateCase{"plane92x80", true, 92, 80, {5, 30}, full, 200},
                                         LocateCase{"tile9Clean", false, 9, 9, {0, 0}, quick, 200},
                                         LocateCase{"tile16Whole", false, 16, 16, {3, 3}, quick, 190},
                                         LocateCase{"tile8x16Half", false, 8, 16, {3, 3}, full, 195},
                                         LocateCase{"tile16Hard", false, 16, 16, {12, 10}, full, 190}),
                         [](const testing::TestParamInfo<LocateCase> &each) { return each.param.name; });

TEST(PositionIndex, countsTheCellsThatCarryPosition) {
    PatchMaker maker;
    SeenCells seen = maker.make(false, 16, 16, {});
    seen.at(3, 4) = unknownCell;
    // Exactly one of the cells (7, 7) and (8, 8) carries position. Its bit is inverted.
    const Square wrong = maker.place.squareOf(7, 7);
    ASSERT_NE(carriesPosition(wrong.column, wrong.row), carriesPosition(wrong.column + 1, wrong.row + 1));
    const int wrongColumn = carriesPosition(wrong.column, wrong.row) ? 7 : 8;
    seen.at(wrongColumn, wrongColumn) ^= 1U;
    const Square lost = maker.place.squareOf(3, 4);
    const std::optional<Location> location = PositionIndex::shared().locate(seen);
    ASSERT_TRUE(location);
    EXPECT_EQ(location->place, maker.place);
    EXPECT_EQ(location->disagreeing, 1);
    EXPECT_EQ(location->agreeing, carriesPosition(lost.column, lost.row) ? 190 : 191);
    // The probability that at most one of n random bits disagrees with a place is (1 + n) / 2^n. In all four
    // orientations together, there are 369,000 places.
    const int count = location->agreeing + 1;
    EXPECT_NEAR(location->chanceLog10, 5.567 + std::log10(1 + count) - count * 0.30103, 0.01);
}

// This patch is the test vector in docs/pattern-code.md.
TEST(PositionIndex, findsTheDocumentedPatch) {
    const std::string rows = "1100011101010010001010101111011101000010100010110000000110110011";
    SeenCells seen(8, 8);
    std::transform(rows.begin(), rows.end(), seen.cells.begin(), [](char bit) { return bit == '1' ? 1 : 0; });
    const std::optional<Location> location = PositionIndex::shared().locate(seen);
    ASSERT_TRUE(location && isCertain(*location));
    EXPECT_EQ(location->place, (CodePlace{CodePlace::plane, {140, 130}, 1}));
    EXPECT_EQ(location->disagreeing, 0);
}

TEST(PositionIndex, findsATileDespiteRandomCellsAroundIt) {
    // The patch extends three cells beyond the tile on every side. These outer cells have random bits.
    PatchMaker maker;
    for (int i = 0; i < 50; ++i) {
        const SeenCells tile = maker.make(false, 16, 16, {});
        SeenCells seen(22, 22);
        for (int row = 0; row < 22; ++row) {
            for (int column = 0; column < 22; ++column) {
                const bool isInside = column >= 3 && column < 19 && row >= 3 && row < 19;
                seen.at(column, row) =
                    isInside ? tile.at(column - 3, row - 3) : static_cast<std::uint8_t>(maker.below(2));
            }
        }
        const std::optional<Location> location = PositionIndex::shared().locate(seen);
        ASSERT_TRUE(location && isCertain(*location));
        EXPECT_EQ(location->place.tile, maker.place.tile);
        EXPECT_EQ(location->place.squareOf(3, 3), maker.place.squareOf(0, 0));
    }
}

TEST(PositionIndex, isNeverCertainOfAPatchWithoutTheCode) {
    PatchMaker maker;
    for (int i = 0; i < 300; ++i) {
        SeenCells seen(5 + maker.below(20), 5 + maker.below(20));
        // There are five kinds of patches: without marks, with marks everywhere, striped, checkered, and random. In
        // the first four kinds, 2 % of the bits are wrong.
        const int kind = i % 5;
        for (int row = 0; row < seen.height; ++row) {
            for (int column = 0; column < seen.width; ++column) {
                const bool regular[] = {false, true, row % 2 == 0, (row + column) % 2 == 0};
                const bool bit = kind == 4 ? maker.below(2) != 0 : regular[kind] != (maker.below(50) == 0);
                seen.at(column, row) = bit ? 1 : 0;
            }
        }
        const std::optional<Location> location = PositionIndex::shared().locate(seen);
        EXPECT_FALSE(location && isCertain(*location)) << "kind " << kind;
    }
    EXPECT_FALSE(PositionIndex::shared().locate(SeenCells(9, 9))) << "no cell is known";
    EXPECT_FALSE(PositionIndex::shared().locate(SeenCells(0, 0))) << "no cells";
}

}  // namespace

}  // namespace pattern_reader
