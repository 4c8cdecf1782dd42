#include "pattern_reader/place_finder.h"

#include <gtest/gtest.h>

#include <random>

#include "camera_library/pattern_code/position_code.h"

namespace {

using namespace pattern_reader;

int codeBit(int tile, cv::Point square) {
    return int(tile == Place::plane ? pattern_code::planeBit(square.x, square.y)
                                    : pattern_code::tileBit(tile, square.x, square.y));
}

// Returns what a camera would see of a part of the code. `motion` maps the lattice that the camera sees to the code's
// lattice. Up to `wrong` of the squares are misread.
std::vector<SquareReading> readingsOf(int tile, cv::Rect part, const LatticeMotion &motion, int wrong, unsigned seed) {
    std::vector<SquareReading> readings;
    for (int y = -140; y < 140; y++) {
        for (int x = -140; x < 140; x++) {
            const cv::Point square = motion.square({x, y});
            if (part.contains(square)) {
                SquareReading reading;
                reading.cell = {x, y};
                reading.marked = codeBit(tile, square) != 0;
                reading.certainty = 1;
                readings.push_back(reading);
            }
        }
    }
    std::mt19937 random(seed);
    for (int i = 0; i < wrong; i++) {
        SquareReading &reading = readings[random() % readings.size()];
        reading.marked = !reading.marked;
    }
    return readings;
}

TEST(PlaceFinder, findsPartsOfTheCodeInEveryOrientation) {
    struct Case {
        const char *name;
        int tile;
        cv::Rect part;
        int wrong;
    };
    const Case cases[] = {
        {"6 x 6 squares of the plane", Place::plane, {100, 57, 6, 6}, 0},
        {"a corner of the plane", Place::plane, {264, 264, 8, 8}, 2},
        {"a large piece with many wrong readings", Place::plane, {3, 120, 40, 30}, 90},
        {"the Single pattern", 0, {0, 0, 16, 16}, 8},
        {"part of a tile", 7, {4, 0, 12, 12}, 4},
        {"the last tile without its outermost squares", 18, {1, 1, 14, 14}, 0},
    };
    for (const Case &one : cases) {
        for (int turns = 0; turns < 4; turns++) {
            LatticeMotion motion;
            motion.quarterTurns = turns;
            motion.shift = cv::Point(one.part.x + 9, one.part.y - 4);
            const auto place = findPlace(readingsOf(one.tile, one.part, motion, one.wrong, unsigned(turns)));
            ASSERT_TRUE(place) << one.name << ", turned " << turns;
            EXPECT_EQ(place->tile, one.tile) << one.name;
            EXPECT_EQ(place->motion.quarterTurns, turns) << one.name;
            EXPECT_EQ(place->motion.shift, motion.shift) << one.name << ", turned " << turns;
            EXPECT_LE(place->mismatches, one.wrong) << one.name;
            EXPECT_LT(place->log10Chance, -5) << one.name;
        }
    }
}

TEST(PlaceFinder, returnsNoPlaceThatMayBeDueToChance) {
    LatticeMotion still;
    EXPECT_FALSE(findPlace({}));
    EXPECT_FALSE(findPlace(readingsOf(Place::plane, {50, 50, 5, 5}, still, 0, 1))) << "25 squares are too few";
    EXPECT_FALSE(findPlace(readingsOf(Place::plane, {50, 50, 6, 6}, still, 4, 1))) << "36 squares, some wrong";
    for (unsigned seed = 0; seed < 60; seed++) {
        std::mt19937 random(seed);
        auto readings = readingsOf(Place::plane, {80, 80, int(6 + seed % 12), int(6 + seed % 7)}, still, 0, seed);
        // If `share` is 0, about a half of the squares are marked; if it is 1, a quarter; if it is 2, three quarters.
        const unsigned share = seed % 3;
        for (SquareReading &reading : readings) {
            const unsigned dice = unsigned(random() >> 7 & 3);
            reading.marked = share == 0 ? dice < 2 : share == 1 ? dice < 1 : dice < 3;
        }
        EXPECT_FALSE(findPlace(readings)) << "random marks " << seed;
    }
    for (const bool marked : {false, true}) {
        auto readings = readingsOf(Place::plane, {80, 80, 20, 20}, still, 0, 1);
        for (SquareReading &reading : readings) {
            reading.marked = marked;
        }
        EXPECT_FALSE(findPlace(readings)) << "all squares alike";
    }
}

TEST(PlaceFinder, doesNotReadMirroredPatterns) {
    LatticeMotion still;
    auto readings = readingsOf(3, {0, 0, 16, 16}, still, 0, 1);
    for (SquareReading &reading : readings) {
        reading.cell.x = -reading.cell.x;
    }
    EXPECT_FALSE(findPlace(readings));
}

}  // namespace
