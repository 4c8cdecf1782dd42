// Tests joinParts(): two readings of the same pattern are joined if they are parts of one board, and otherwise stay
// separate.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "pattern_reader/board_parts.h"

namespace {

using namespace pattern_reader;

struct Part {
    int firstColumn;
    int columns;
    cv::Point2f aside;  // pixels; how far the part is displaced
};

// Returns a reading of some columns of a board with twelve rows. The board is seen at an angle that shears its squares.
PatternReading readingOf(const Part &part) {
    PatternReading reading;
    reading.kind = PatternKind::Plane;
    for (int y = 40; y < 52; y++) {
        for (int x = part.firstColumn; x < part.firstColumn + part.columns; x++) {
            reading.corners.push_back({cv::Point2f(float(12 * x + 9 * y), float(3 * y)) + part.aside, {x, y}});
        }
    }
    return reading;
}

TEST(BoardParts, becomeOneReadingIfTheyContinueEachOther) {
    const struct {
        const char *name;
        Part second;
        size_t readings;
        size_t corners;
    } rows[] = {{"with corners in common", {18, 9, {}}, 1, 12 * 17},
                {"with a gap between them", {25, 5, {}}, 1, 12 * 15},
                {"with corners in common, but displaced by one column", {18, 9, {12, 0}}, 2, 12 * 10},
                {"the same corners of another board", {10, 9, {400, 90}}, 2, 12 * 10},
                {"other corners of another board", {25, 5, {200, 45}}, 2, 12 * 10}};
    for (const auto &row : rows) {
        std::vector<PatternReading> readings = {readingOf(row.second), readingOf({10, 10, {}})};
        joinParts(readings, [](CornerLattice &) { return std::nullopt; });
        ASSERT_EQ(readings.size(), row.readings) << row.name;
        EXPECT_EQ(readings.front().corners.size(), row.corners) << row.name;
    }
}

TEST(BoardParts, areReplacedByTheReadingOfTheirJoinedCorners) {
    std::vector<PatternReading> readings = {readingOf({10, 10, {}}), readingOf({20, 5, {}})};
    joinParts(readings, [](CornerLattice &lattice) {
        PatternReading whole = readingOf({10, 15, {}});
        whole.squaresCompared = int(lattice.corners.size());
        return std::optional<PatternReading>(whole);
    });
    ASSERT_EQ(readings.size(), 1U);
    EXPECT_EQ(readings.front().squaresCompared, 12 * 15);
}

}  // namespace
