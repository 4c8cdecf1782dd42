// Every promise of the position code, checked against every pair of windows.
#include "camera_library/pattern_code/position_code.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "camera_library/pattern_code/bit_count.h"

namespace {

using namespace pattern_code;
using Word = std::uint64_t;

struct Window {
    Word word;
    Word mask;
};

int distance(const Window &a, const Window &b) {
    return onesIn((a.word ^ b.word) & a.mask & b.mask);
}

Word fullMask(int n) {
    return ~Word{0} >> (64 - n * n);
}

/** A window of side n as a word, its square (column, row) turned so many quarters clockwise. */
template <typename Bit>
Word wordOf(int n, int turns, const Bit &bit) {
    Word word = 0;
    for (int row = 0; row < n; ++row) {
        for (int column = 0; column < n; ++column) {
            const int across[] = {column, row, n - 1 - column, n - 1 - row};
            const int down[] = {row, n - 1 - column, n - 1 - row, column};
            word |= Word{bit(across[turns], down[turns]) ? 1U : 0U} << (row * n + column);
        }
    }
    return word;
}

std::vector<Window> planeWindows(int n, int turns) {
    std::vector<Window> windows;
    for (int y = 0; y + n <= planeSide; ++y) {
        for (int x = 0; x + n <= planeSide; ++x) {
            windows.push_back(
                {wordOf(n, turns, [&](int column, int row) { return planeBit(x + column, y + row); }), fullMask(n)});
        }
    }
    return windows;
}

std::vector<Window> tileWindows(int n, int turns) {
    std::vector<Window> windows;
    for (int tile = 0; tile < tileCount; ++tile) {
        for (int y = 0; y + n <= tileSide; ++y) {
            for (int x = 0; x + n <= tileSide; ++x) {
                const auto carries = [&](int column, int row) { return carriesPosition(x + column, y + row); };
                windows.push_back({wordOf(n, turns,
                                          [&](int column, int row) {
                                              return carries(column, row) && tileBit(tile, x + column, y + row);
                                          }),
                                   wordOf(n, turns, carries)});
            }
        }
    }
    return windows;
}

/**
 * The least distance of whole windows in one list to those in another, as far as it is less than the limit:
 * two such windows agree, but for (limit - 1) / partCount bits, in one of the parts they are cut into.
 * Without sameList a window is compared with its own number too.
 */
class NearWindows {
public:
    NearWindows(const std::vector<Window> &allWindows, int n, int partCount) : windows(allWindows) {
        for (int part = 0, shift = 0; part < partCount; ++part) {
            const int width = (n * n - shift) / (partCount - part);
            Part made{shift, width, std::vector<int>((std::size_t{1} << width) + 1), {}};
            for (const Window &window : windows) {
                ++made.starts[key(made, window.word) + 1];
            }
            for (std::size_t i = 1; i < made.starts.size(); ++i) {
                made.starts[i] += made.starts[i - 1];
            }
            std::vector<int> next = made.starts;
            made.entries.resize(windows.size());
            for (std::size_t i = 0; i < windows.size(); ++i) {
                made.entries[static_cast<std::size_t>(next[key(made, windows[i].word)]++)] = static_cast<int>(i);
            }
            parts.push_back(std::move(made));
            shift += width;
        }
    }

    int leastDistance(const std::vector<Window> &others, bool sameList, int limit) const {
        int least = limit;
        const int flips = (limit - 1) / static_cast<int>(parts.size());
        for (const Part &part : parts) {
            for (std::size_t i = 0; i < others.size(); ++i) {
                probe(part, key(part, others[i].word), 0, flips, [&](int entry) {
                    if (!sameList || static_cast<std::size_t>(entry) != i) {
                        least = std::min(least, distance(windows[static_cast<std::size_t>(entry)], others[i]));
                    }
                });
            }
        }
        return least;
    }

private:
    struct Part {
        int shift;
        int width;
        std::vector<int> starts;
        std::vector<int> entries;
    };

    static std::size_t key(const Part &part, Word word) {
        return static_cast<std::size_t>((word >> part.shift) & ((Word{1} << part.width) - 1));
    }

    template <typename Visit>
    static void probe(const Part &part, std::size_t atKey, int fromBit, int flips, const Visit &visit) {
        for (int i = part.starts[atKey]; i < part.starts[atKey + 1]; ++i) {
            visit(part.entries[static_cast<std::size_t>(i)]);
        }
        for (int bit = fromBit; flips > 0 && bit < part.width; ++bit) {
            probe(part, atKey ^ std::size_t{1} << bit, bit + 1, flips - 1, visit);
        }
    }

    const std::vector<Window> &windows;
    std::vector<Part> parts;
};

int leastDistance(const std::vector<Window> &windows, const Window &other) {
    int least = 64;
    for (const Window &window : windows) {
        least = std::min(least, distance(window, other));
    }
    return least;
}

class PlaneWindows : public testing::TestWithParam<int> {};

TEST_P(PlaneWindows, areAsFarFromOneAnotherInEveryOrientationAsPromised) {
    const int n = GetParam();
    const int promised = planeWindowDistance(n);
    const std::vector<Window> upright = planeWindows(n, 0);
    const NearWindows near(upright, n, n < 7 ? 2 : n == 7 ? 3 : 4);
    // One window turned thrice against another is the other turned once against the one.
    EXPECT_GE(near.leastDistance(upright, true, promised), promised);
    EXPECT_GE(near.leastDistance(planeWindows(n, 1), false, promised), promised);
    EXPECT_GE(near.leastDistance(planeWindows(n, 2), false, promised), promised);
    EXPECT_GE(leastDistance(upright, {0, fullMask(n)}), promised) << "a board without marks";
    EXPECT_GE(leastDistance(upright, {fullMask(n), fullMask(n)}), promised) << "a board full of marks";
}

INSTANTIATE_TEST_SUITE_P(Sides, PlaneWindows, testing::Values(5, 6, 7, 8));

class TileWindows : public testing::TestWithParam<int> {};

TEST_P(TileWindows, areAsFarFromOneAnotherAndFromThePlaneAsPromised) {
    const int n = GetParam();
    const int promised = tileWindowDistance(n);
    const std::vector<Window> upright = tileWindows(n, 0);
    for (int turns = 0; turns < 4; ++turns) {
        const std::vector<Window> turned = tileWindows(n, turns);
        int least = 64;
        for (std::size_t i = 0; i < upright.size(); ++i) {
            for (std::size_t j = turns == 0 ? i + 1 : 0; j < turned.size(); ++j) {
                least = std::min(least, distance(upright[i], turned[j]));
            }
        }
        EXPECT_GE(least, promised) << turns << " quarter turns";

        const std::vector<Window> plane = planeWindows(n, turns);
        for (const Window &window : upright) {
            least = std::min(least, leastDistance(plane, window));
        }
        EXPECT_GE(least, promised) << "against the plane, " << turns << " quarter turns";
    }
    EXPECT_GE(leastDistance(upright, {0, fullMask(n)}), promised);
    EXPECT_GE(leastDistance(upright, {fullMask(n), fullMask(n)}), promised);
}

INSTANTIATE_TEST_SUITE_P(Sides, TileWindows, testing::Values(7, 8));

// The way the distances are found is itself tried: windows that were made alike are reported.
TEST(NearWindowsOfTheTest, findsPlantedNeighbours) {
    const std::vector<Window> windows = planeWindows(8, 0);
    std::vector<Window> planted = planeWindows(8, 1);
    planted[4711].word = windows[17].word ^ 0x8001000100010001U;
    EXPECT_EQ(NearWindows(windows, 8, 4).leastDistance(planted, false, 12), 5);
    std::vector<Window> twins = windows;
    twins.push_back(windows[99]);
    EXPECT_EQ(NearWindows(twins, 8, 4).leastDistance(twins, true, 12), 0);
}

TEST(PositionCode, isThatOfVersionOne) {
    EXPECT_EQ(patternVersion, 1);
    EXPECT_EQ(positionCodeChecksum(), 0x03D3B700E2F72144U);
}

struct WindowCase {
    int width, height, offsetX, offsetY;
    std::optional<Square> expected;
};

TEST(PlaneWindowForPattern, putsTheCentralCornerAtTheOffset) {
    // Column + central corner + 1 is 136 + offset; the central corner of 15 is 7, of 4 it is 1.
    const WindowCase cases[] = {
        {15, 15, 0, 0, Square{128, 128}},  {15, 15, 3, -5, Square{131, 123}},  {4, 5, 0, 0, Square{134, 133}},
        {91, 91, -90, 90, Square{0, 180}}, {90, 91, -90, 90, Square{1, 180}},  {91, 91, -91, 0, std::nullopt},
        {91, 91, 0, 91, std::nullopt},     {200, 200, -36, 35, Square{0, 71}}, {200, 200, -37, 0, std::nullopt},
        {271, 271, 0, 0, Square{0, 0}},    {272, 5, 0, 0, std::nullopt},
    };
    for (const WindowCase &each : cases) {
        EXPECT_EQ(planeWindowForPattern(each.width, each.height, each.offsetX, each.offsetY), each.expected)
            << each.width << " x " << each.height << " at " << each.offsetX << ", " << each.offsetY;
    }
}

TEST(PlaneWindowForPattern, fitsEverySizeAndOffsetOfTheForm) {
    for (int count = 2; count <= 91; ++count) {
        EXPECT_LE(offsetRangeForCorners(count).least, -90) << count;
        EXPECT_GE(offsetRangeForCorners(count).greatest, 90) << count;
        for (const int offset : {-90, 90}) {
            const std::optional<Square> window = planeWindowForPattern(count, count, offset, offset);
            ASSERT_TRUE(window);
            EXPECT_GE(window->column, 0);
            EXPECT_LE(window->column + count + 1, planeSide);
        }
    }
}

}  // namespace
