// Tests boards with many squares, with large squares and with small squares.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/reader/synthetic_target.h"
#include "camera_library/pattern_code/position_code.h"
#include "pattern_reader/pattern_reader.h"

namespace {

using namespace pattern_reader;
using namespace reader_bench;

// A square part of the position code's plane, turned and slightly blurred.
struct DrawnBoard {
    int squares;
    double pixels;       // per square
    double angle = 0.1;  // radians

    static constexpr int firstSquare = 30;  // column and row of the first square in the plane

    double middle() const { return squares / 2.0; }
    int side() const { return int(pixels * (squares * (std::sin(angle) + std::cos(angle)) + 2)); }

    cv::Point2d imageOf(cv::Point lattice) const {
        const double x = lattice.x - firstSquare - middle();
        const double y = lattice.y - firstSquare - middle();
        return cv::Point2d(std::cos(angle) * x - std::sin(angle) * y, std::sin(angle) * x + std::cos(angle) * y) *
                   pixels +
               cv::Point2d(side() / 2.0, side() / 2.0);
    }

    cv::Mat draw() const {
        std::vector<int> marks;
        for (int row = 0; row < squares; row++) {
            for (int column = 0; column < squares; column++) {
                marks.push_back(pattern_code::planeBit(firstSquare + column, firstSquare + row) ? 1 : 0);
            }
        }
        const CheckerTarget target(squares, squares, marks, true);
        const double u = std::cos(angle) / pixels;
        const double v = std::sin(angle) / pixels;
        cv::Mat picture(side(), side(), CV_8U);
        for (int y = 0; y < side(); y++) {
            for (int x = 0; x < side(); x++) {
                const double dx = x - side() / 2.0;
                const double dy = y - side() / 2.0;
                // A pixel is as dark as the target at the pixel's centre p. inkShare() needs an area, so it gets a tiny
                // square at p.
                const cv::Point2d p(u * dx + v * dy + middle(), u * dy - v * dx + middle());
                const double tiny = 1e-4 / pixels;
                const double ink = target.inkShare(
                    {p, p + cv::Point2d(tiny, 0), p + cv::Point2d(tiny, tiny), p + cv::Point2d(0, tiny)});
                picture.at<uchar>(y, x) = ink > 0.5 ? 30 : 220;
            }
        }
        cv::GaussianBlur(picture, picture, {}, 0.8);
        return picture;
    }
};

TEST(BoardSizes, readsAllCornersOfManyAndOfLargeSquares) {
    for (const DrawnBoard &board : {DrawnBoard{201, 8}, DrawnBoard{7, 400}}) {
        const auto readings = readPatterns(board.draw());
        ASSERT_EQ(readings.size(), 1U) << board.pixels;
        const auto corners = size_t(board.squares - 1) * size_t(board.squares - 1);
        EXPECT_EQ(readings.front().corners.size(), corners) << board.pixels;
        for (const PatternCorner &corner : readings.front().corners) {
            const cv::Point2d off = board.imageOf(corner.lattice) - cv::Point2d(corner.image);
            ASSERT_LT(std::hypot(off.x, off.y), 0.5) << board.pixels;
        }
    }
}

// Returns the picture as a colour camera sees it, converted to grey again. Each pixel measures only one colour, and the
// other two colours are interpolated.
cv::Mat throughColourMosaic(const cv::Mat &grey) {
    cv::Mat colours;
    cv::Mat seen;
    cv::demosaicing(grey, colours, cv::COLOR_BayerBG2BGR);
    cv::cvtColor(colours, seen, cv::COLOR_BGR2GRAY);
    return seen;
}

TEST(BoardSizes, readsSquaresOfFourPixelsInGreyAndInColour) {
    for (const double angle : {0.45, 0.9}) {
        cv::Mat grey;
        cv::resize(DrawnBoard{17, 24, angle}.draw(), grey, {}, 1.0 / 6, 1.0 / 6, cv::INTER_AREA);
        cv::GaussianBlur(grey, grey, {}, 0.4);
        for (const cv::Mat &picture : {grey, throughColourMosaic(grey)}) {
            const auto readings = readPatterns(picture);
            ASSERT_EQ(readings.size(), 1U) << angle;
            EXPECT_GE(readings.front().corners.size(), 250U) << angle;
            EXPECT_LT(readings.front().squaresDiffering * 20, readings.front().squaresCompared) << angle;
        }
    }
}

}  // namespace
