// Tests the corners, lattices and marks of boards in pictures of the synthetic camera, and whole pictures that are hard
// to read.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <opencv2/calib3d.hpp>
#include <random>

#include "bench/reader/scenes.h"
#include "bench/reader/scoring.h"
#include "bench/reader/synthetic_camera.h"
#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/lattice_completion.h"
#include "pattern_reader/lattice_linking.h"
#include "pattern_reader/lattice_measurement.h"
#include "pattern_reader/lattice_trust.h"
#include "pattern_reader/point_detector.h"
#include "pattern_reader/square_marks.h"

namespace {

using namespace pattern_reader;
using namespace reader_bench;

struct View {
    const char *name;
    double pixels;        // per square
    double tilt;          // degrees
    bool darkFirst;       // true if the board's top-left square is dark
    double blur = 0.6;    // pixels
    bool shadow = false;  // over the picture's left half
};

constexpr int columns = 9;
constexpr int rows = 7;

struct Board {
    std::vector<int> marks;
    CameraModel camera;
    TargetPose pose;
    cv::Mat image;
    std::vector<ImageLevel> levels;
    std::vector<CornerLattice> lattices;
};

Board takeBoard(const View &view) {
    Board board;
    std::mt19937 random(11);
    for (int i = 0; i < columns * rows; i++) {
        board.marks.push_back(int(random() >> 5 & 1));
    }
    const cv::Size size(int(view.pixels * 14), int(view.pixels * 12));
    board.camera.focalLength = 1.5 * size.width;
    board.camera.centre = {size.width / 2.0 + 0.3, size.height / 2.0 - 0.2};
    board.camera.k1 = -0.1;
    cv::Matx33d tilt;
    cv::Rodrigues(cv::Vec3d(0.8, 0.6, 0) * (view.tilt * CV_PI / 180), tilt);
    cv::Matx33d roll;
    cv::Rodrigues(cv::Vec3d(0, 0, 0.4), roll);
    board.pose.rotation = tilt * roll;
    board.pose.anchor = {columns / 2.0, rows / 2.0};
    board.pose.translation = {0, 0, board.camera.focalLength / view.pixels};
    PlacedTarget placed;
    placed.target = std::make_shared<CheckerTarget>(columns, rows, board.marks, view.darkFirst);
    placed.pose = board.pose;
    Exposure exposure;
    exposure.lightSlope = {0.3, -0.2};
    exposure.blurSigma = view.blur;
    board.image = photograph(cv::Mat(size, CV_32F, cv::Scalar(130)), board.camera, {placed}, exposure, random);
    if (view.shadow) {
        cv::Mat left = board.image.colRange(0, size.width / 2);
        left *= 0.6;
    }
    board.levels = makePyramid(board.image);
    std::vector<CornerLattice> all;
    for (ImageLevel &level : board.levels) {
        for (CornerLattice &lattice : linkLattices(level, findPoints(level).saddles, 9)) {
            all.push_back(lattice);
        }
    }
    std::sort(all.begin(), all.end(),
              [](const CornerLattice &a, const CornerLattice &b) { return a.corners.size() > b.corners.size(); });
    if (!all.empty()) {
        completeLattice(all.front(), board.levels);
        board.lattices.push_back(all.front());
    }
    return board;
}

// Returns the lattice point whose true position in the image is closest to `image`.
cv::Point truePoint(const Board &board, cv::Point2f image) {
    cv::Point best;
    double distance = 1e9;
    for (int y = 0; y <= rows; y++) {
        for (int x = 0; x <= columns; x++) {
            const cv::Point2d d = projectPoint(board.camera, board.pose, cv::Point2d(x, y)) - cv::Point2d(image);
            if (d.dot(d) < distance) {
                distance = d.dot(d);
                best = {x, y};
            }
        }
    }
    return best;
}

const View views[] = {{"small", 7, 0, true},      {"small and tilted", 9, 40, false},
                      {"middling", 14, 30, true}, {"large", 36, 20, false},
                      {"steep", 20, 58, true},    {"soft", 32, 10, true, 4}};

TEST(BoardReading, findsExactlyTheInnerCorners) {
    for (const View &view : views) {
        Board board = takeBoard(view);
        ASSERT_EQ(board.lattices.size(), 1U) << view.name;
        CornerLattice &lattice = board.lattices.front();
        const std::vector<CornerFit> fits = measureCorners(board.levels, lattice);
        EXPECT_EQ(lattice.corners.size(), size_t((columns - 1) * (rows - 1))) << view.name;
        ASSERT_EQ(fits.size(), lattice.corners.size()) << view.name;
        double squared = 0;
        for (const LatticeCorner &corner : lattice.corners) {
            const cv::Point at = truePoint(board, corner.position);
            EXPECT_TRUE(at.x > 0 && at.y > 0 && at.x < columns && at.y < rows) << view.name;
            const cv::Point2d d = projectPoint(board.camera, board.pose, at) - cv::Point2d(corner.position);
            squared += d.dot(d);
        }
        EXPECT_LT(std::sqrt(squared / double(lattice.corners.size())), 0.08) << view.name;
    }
}

TEST(BoardReading, tellsWhichCornersAShadowsEdgeDisturbs) {
    Board board = takeBoard({"shadow", 24, 10, true, 0.6, true});
    ASSERT_EQ(board.lattices.size(), 1U);
    CornerLattice &lattice = board.lattices.front();
    measureCorners(board.levels, lattice);
    int onEdge = 0;
    for (const LatticeCorner &corner : lattice.corners) {
        const cv::Point2d truth = projectPoint(board.camera, board.pose, truePoint(board, corner.position));
        const float distance = std::abs(corner.position.x - float(board.image.cols) / 2);
        const double error = cv::norm(truth - cv::Point2d(corner.position));
        EXPECT_LT(error, 4 * double(corner.sigma) + 0.01) << distance << " px from the edge";
        if (distance < 5) {
            onEdge++;
            EXPECT_TRUE(corner.disturbed) << distance;
        }
        if (distance > 16) {
            EXPECT_FALSE(corner.disturbed) << distance;
        }
    }
    EXPECT_GE(onEdge, 2);
}

TEST(BoardReading, keepsHandednessAndColoursInTheLattice) {
    for (const View &view : views) {
        Board board = takeBoard(view);
        ASSERT_EQ(board.lattices.size(), 1U) << view.name;
        const CornerLattice &lattice = board.lattices.front();
        for (const LatticeCorner &corner : lattice.corners) {
            const cv::Point here = truePoint(board, corner.position);
            const LatticeCorner *right = lattice.at(corner.cell + cv::Point(1, 0));
            const LatticeCorner *below = lattice.at(corner.cell + cv::Point(0, 1));
            const LatticeCorner *across = lattice.at(corner.cell + cv::Point(1, 1));
            if (right == nullptr || below == nullptr || across == nullptr) {
                continue;
            }
            const cv::Point u = truePoint(board, right->position) - here;
            const cv::Point v = truePoint(board, below->position) - here;
            ASSERT_EQ(u.x * v.y - u.y * v.x, 1) << view.name;
            const cv::Point opposite = truePoint(board, across->position);
            const int column = std::min(here.x, opposite.x);
            const int row = std::min(here.y, opposite.y);
            ASSERT_EQ(lattice.isLight(corner.cell), ((column + row) % 2 != 0) == view.darkFirst) << view.name;
        }
    }
}

TEST(BoardReading, readsEveryMark) {
    for (const View &view : views) {
        Board board = takeBoard(view);
        ASSERT_EQ(board.lattices.size(), 1U) << view.name;
        CornerLattice &lattice = board.lattices.front();
        const std::vector<CornerFit> fits = measureCorners(board.levels, lattice);
        std::map<std::pair<int, int>, int> seen;
        for (const SquareReading &reading : readMarks(board.image, lattice, fits)) {
            if (reading.certainty < 0.3F || reading.measuredCorners < 4) {
                continue;
            }
            const cv::Point a = truePoint(board, lattice.at(reading.cell)->position);
            const cv::Point b = truePoint(board, lattice.at(reading.cell + cv::Point(1, 1))->position);
            const int column = std::min(a.x, b.x);
            const int row = std::min(a.y, b.y);
            seen[{column, row}]++;
            EXPECT_EQ(reading.marked, board.marks[size_t(row * columns + column)] != 0)
                << view.name << ", column " << column << ", row " << row;
        }
        // All squares with four inner corners are seen, except at most one.
        EXPECT_GE(seen.size(), size_t((columns - 2) * (rows - 2)) - 1) << view.name;
    }
}

// If a board is seen at a steep angle, neighbouring lattice lines can be much closer together than neighbouring corners
// on a line. Then even a small error can move a corner onto a mark.
TEST(BoardReading, dropsACornerThatLiesOnAMarkOfASteeplySeenBoard) {
    const cv::Point2f column(20, 0);
    const cv::Point2f row(19, 4);
    const cv::Point stray(5, 4);
    CornerLattice lattice;
    std::vector<SquareReading> marks;
    const Place place;
    for (int y = 0; y < 9; y++) {
        for (int x = 0; x < 9; x++) {
            const cv::Point2f aside = cv::Point(x, y) == stray ? (column - row) / 3 : cv::Point2f();
            lattice.add({{x, y}, column * float(x) + row * float(y) + aside});
            SquareReading mark;
            mark.cell = {x, y};
            mark.certainty = 1;
            codeBit(place.tile, mark.cell, mark.marked);
            marks.push_back(mark);
        }
    }
    keepTrustedCorners(lattice, marks, place);
    EXPECT_EQ(lattice.corners.size(), 80U);
    EXPECT_EQ(lattice.at(stray), nullptr);
}

TEST(HardPictures, areReadWithEveryPatternInThem) {
    const struct {
        unsigned number;
        const char *hard;
    } pictures[] = {{619, "a plate, and beside it something that looks like one more mark"},
                    {998, "a plate whose triangle is cut off, so that its dots must show which way is up"},
                    {1228, "a plate covered along a side"},
                    {1759, "a plate so small that its frame darkens the nearest dots"},
                    {1957, "a board tilted about its diagonal, which shears its squares"}};
    for (const auto &[number, hard] : pictures) {
        const Scene scene = makeScene(number);
        const PictureScore score = scorePicture(scene, readPatterns(scene.image));
        EXPECT_EQ(score.falsePlaces + score.falseValues, 0) << hard;
        for (const PatternScore &pattern : score.patterns) {
            EXPECT_TRUE(pattern.placed) << hard;
            EXPECT_TRUE(pattern.valuesRead || pattern.pattern->visibility != Visibility::Whole) << hard;
        }
    }
}

}  // namespace
