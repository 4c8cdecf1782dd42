// Tests the reading of plain checkerboards. The caller of readPatterns gives the number of their inner corners.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "pattern_reader/pattern_reader.h"

namespace {

using namespace pattern_reader;

constexpr double square = 24;  // pixels, in the drawing

// Returns a drawing of a board with this number of inner corners and a margin of one square. The board's top-left
// square is dark.
cv::Mat drawBoard(cv::Size corners) {
    cv::Mat image(int(square) * (corners.height + 3), int(square) * (corners.width + 3), CV_8U, cv::Scalar(230));
    for (int y = 0; y <= corners.height; y++) {
        for (int x = 0; x <= corners.width; x++) {
            if ((x + y) % 2 == 0) {
                const cv::Point corner(int(square) * (x + 1), int(square) * (y + 1));
                image(cv::Rect(corner, cv::Size(int(square), int(square)))) = 30;
            }
        }
    }
    return image;
}

struct Photographed {
    cv::Mat image;
    cv::Matx23d map;  // from pixels of the drawing to pixels of `image`
};

Photographed photograph(const cv::Mat &drawing, double clockwise) {
    const cv::Point2d middle(drawing.cols / 2.0, drawing.rows / 2.0);
    Photographed result;
    cv::Mat map = cv::getRotationMatrix2D(middle, -clockwise, 1.1);
    const double side = 1.2 * std::hypot(drawing.cols, drawing.rows);
    map.at<double>(0, 2) += side / 2 - middle.x;
    map.at<double>(1, 2) += side / 2 - middle.y;
    cv::warpAffine(drawing, result.image, map, cv::Size(int(side), int(side)), cv::INTER_LINEAR, cv::BORDER_CONSTANT,
                   cv::Scalar(120));
    cv::GaussianBlur(result.image, result.image, {}, 0.8);
    result.map = map;
    return result;
}

std::vector<PatternReading> readBoards(const cv::Mat &image, cv::Size board) {
    ReadingOptions options;
    options.board = board;
    return readPatterns(image, options);
}

struct Case {
    cv::Size corners;
    double clockwise;    // how far the board is turned, degrees
    int orientations;    // the number of orientations that look the same
    int turnsToReading;  // quarter turns clockwise from the drawing's x axis to the reading's x axis
};

TEST(PlainBoard, placesEveryCornerAndCountsTheOrientationsThatLookTheSame) {
    const Case cases[] = {
        {{9, 6}, 20, 1, 0}, {{9, 6}, 100, 1, 0},  {{9, 6}, 200, 1, 0}, {{6, 9}, -80, 1, 0},
        {{8, 6}, 30, 2, 0}, {{8, 6}, 170, 2, 2},  {{7, 7}, 10, 2, 0},  {{7, 7}, 190, 2, 2},
        {{6, 6}, 95, 4, 3}, {{6, 6}, -170, 4, 2}, {{3, 3}, 5, 2, 0},
    };
    for (const Case &one : cases) {
        SCOPED_TRACE(testing::Message() << one.corners << " turned by " << one.clockwise);
        const Photographed shot = photograph(drawBoard(one.corners), one.clockwise);
        const auto readings = readBoards(shot.image, one.corners);
        ASSERT_EQ(readings.size(), 1U);
        const PatternReading &reading = readings.front();
        EXPECT_EQ(reading.kind, PatternKind::Board);
        EXPECT_EQ(reading.orientations, one.orientations);
        EXPECT_EQ(reading.confidence, 1);
        ASSERT_EQ(reading.corners.size(), size_t(one.corners.area()));
        for (const PatternCorner &corner : reading.corners) {
            // Turns the corner about the board's middle, from the reading's axes into the drawing's axes.
            cv::Point2d p = cv::Point2d(corner.lattice) - cv::Point2d(one.corners + cv::Size(1, 1)) / 2;
            for (int i = 0; i < one.turnsToReading; i++) {
                p = {-p.y, p.x};
            }
            p += cv::Point2d(one.corners + cv::Size(1, 1)) / 2;
            const cv::Point2d drawn = (p + cv::Point2d(1, 1)) * square - cv::Point2d(0.5, 0.5);
            const cv::Vec2d expected = shot.map * cv::Vec3d(drawn.x, drawn.y, 1);
            EXPECT_NEAR(corner.image.x, expected[0], 0.1) << corner.lattice;
            EXPECT_NEAR(corner.image.y, expected[1], 0.1) << corner.lattice;
        }
    }
}

TEST(PlainBoard, readsNoBoardOfAnotherSizeOrWithoutItsLastColumns) {
    const cv::Mat drawing = drawBoard({9, 6});
    EXPECT_TRUE(readPatterns(drawing).empty());
    for (const cv::Size other : {cv::Size(8, 6), cv::Size(9, 7), cv::Size(10, 6), cv::Size(5, 5)}) {
        EXPECT_TRUE(readBoards(drawing, other).empty()) << other;
    }
    // The right edge of the picture cuts off the last two columns of corners.
    EXPECT_TRUE(readBoards(drawing.colRange(0, drawing.cols - 3 * int(square)), {9, 6}).empty());
    // If a hand covers the middle of one side, some corners of every row and of every column are still seen, so the
    // board is read.
    cv::Mat covered = drawing.clone();
    covered(cv::Rect(0, int(3.2 * square), int(3.4 * square), int(2.2 * square))) = 140;
    const auto readings = readBoards(covered, {9, 6});
    ASSERT_EQ(readings.size(), 1U);
    EXPECT_LT(readings.front().corners.size(), 54U);
    EXPECT_EQ(readings.front().orientations, 1);
}

}  // namespace
