// Tests plates in pictures of the synthetic camera. Marks must be measured exactly, even if a lens bends the plate or
// something covers a part of it. Mirrored plates and similar grids must not be read.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <random>

#include "bench/reader/coded_targets.h"
#include "bench/reader/conditions.h"
#include "bench/reader/empty_pictures.h"
#include "bench/reader/scoring.h"
#include "bench/reader/synthetic_camera.h"
#include "pattern_reader/pattern_reader.h"

namespace {

using namespace pattern_reader;
using namespace reader_bench;

enum class Lens { Straight, Radial, Fisheye };

struct View {
    const char *name;
    double pixels;  // per lattice step, which is half the grid spacing
    double tilt;    // degrees
    Lens lens;
    double shadow;      // share of the light that it removes
    double reflection;  // grey levels that it adds
    Cover cover;
    size_t leastMarks;
    double greatestRms;  // pixels; limit of the rms error of the marks that are not disturbed
};

struct Photograph {
    CodedTarget plate;
    CameraModel camera;
    TargetPose pose;
    cv::Mat image;
};

Photograph takePlate(const View &view) {
    Photograph taken;
    std::mt19937 random(5);
    taken.plate = makePlate(random);
    const int side = int(view.pixels * 24);
    const bool wide = view.lens != Lens::Straight;
    taken.camera.focalLength = (wide ? 0.6 : 1.5) * side;
    taken.camera.centre = {side / 2.0 + 0.3, side / 2.0 - 0.2};
    taken.camera.k1 = view.lens == Lens::Radial ? -0.2 : 0;
    taken.camera.fisheye = view.lens == Lens::Fisheye;
    cv::Matx33d tilt;
    cv::Rodrigues(cv::Vec3d(0.8, 0.6, 0) * (view.tilt * CV_PI / 180), tilt);
    cv::Matx33d roll;
    cv::Rodrigues(cv::Vec3d(0, 0, 0.4), roll);
    taken.pose.rotation = tilt * roll;
    taken.pose.anchor = {8, 8};
    taken.pose.translation = {0, 0, taken.camera.focalLength / view.pixels};
    PlacedTarget placed;
    placed.target = taken.plate.target;
    placed.pose = taken.pose;
    placed.cover = view.cover;
    Exposure exposure;
    if (view.shadow > 0) {
        exposure.shadows.push_back({taken.camera.centre, {0.8, 0.6}, view.shadow, 1});
    }
    if (view.reflection > 0) {
        exposure.glares.push_back({taken.camera.centre, 2.5 * view.pixels, view.reflection});
    }
    taken.image =
        photograph(cv::Mat(cv::Size(side, side), CV_32F, cv::Scalar(120)), taken.camera, {placed}, exposure, random);
    return taken;
}

// True if a hand covers this point of the plate. The edge of the hand runs through some of the marks.
bool halfHidden(double x, double y) {
    return 0.8 * (x - 9.3) + 0.6 * (y - 9) > 2.15;
}

// True if a cable covers this point of the plate.
bool cable(double x, double y) {
    return std::abs(0.94 * x - 0.34 * y - 5) < 0.25;
}

const View views[] = {{"small", 8, 20, Lens::Straight, 0, 0, nullptr, 49, 0.02},
                      {"large", 60, 20, Lens::Straight, 0, 0, nullptr, 49, 0.01},
                      {"beyond a hundred pixels per step", 120, 0, Lens::Straight, 0, 0, nullptr, 49, 0.01},
                      {"steep", 20, 70, Lens::Straight, 0, 0, nullptr, 40, 0.025},
                      {"bent by the lens", 20, 10, Lens::Radial, 0, 0, nullptr, 45, 0.02},
                      {"through a fisheye", 20, 10, Lens::Fisheye, 0, 0, nullptr, 45, 0.02},
                      {"half in shadow", 20, 10, Lens::Straight, 0.4, 0, nullptr, 40, 0.02},
                      {"in a reflection", 20, 10, Lens::Straight, 0, 80, nullptr, 49, 0.02},
                      {"half hidden", 20, 10, Lens::Straight, 0, 0, halfHidden, 33, 0.02},
                      {"behind a cable", 20, 10, Lens::Straight, 0, 0, cable, 38, 0.02}};

TEST(PlateReading, measuresMarksExactlyAndSaysHowExactly) {
    double squares = 0;
    int count = 0;
    for (const View &view : views) {
        const Photograph taken = takePlate(view);
        const std::vector<PatternReading> readings = readPatterns(taken.image);
        ASSERT_EQ(readings.size(), 1U) << view.name;
        const std::vector<PatternCorner> &marks = readings.front().corners;
        EXPECT_GE(marks.size(), view.leastMarks) << view.name;
        double sum = 0;
        int clear = 0;
        for (const PatternCorner &mark : marks) {
            const cv::Point2d d = projectPoint(taken.camera, taken.pose, mark.lattice) - cv::Point2d(mark.image);
            // A mark that is half covered or on the edge of a shadow may be measured less exactly than the others, but
            // this limit holds for it, too.
            EXPECT_LT(std::hypot(d.x, d.y), 0.02 * view.pixels + 0.05) << view.name << ", mark " << mark.lattice;
            if (!mark.disturbed) {
                sum += d.dot(d);
                squares += d.dot(d) / (2 * double(mark.sigma) * double(mark.sigma));
                clear++;
            }
        }
        EXPECT_LT(std::sqrt(sum / clear), view.greatestRms) << view.name;
        count += clear;
    }
    // If sigma is right, the mean of (error along one axis / sigma)² is 1.
    EXPECT_GT(squares / count, 0.6);
    EXPECT_LT(squares / count, 1.6);
}

// The pictures show grids of round marks in a frame. They are not plates, because they have no triangle. In some of the
// pictures, the frame is wide and the picture is blurred, so that a corner of the frame looks like a triangle. Other
// grids have more rows than a plate.
TEST(PlateReading, refusesGridsWithoutATriangle) {
    for (const unsigned number : {318U, 7868U, 11898U, 12498U, 17378U}) {
        EXPECT_TRUE(readPatterns(makeEmptyPicture(EmptyKind::MarkGrid, number)).empty()) << number;
    }
}

// The dots between a plate's marks carry its information block. Dots that cannot be seen must not count as absent.
// Otherwise the block would seem to be wrong, and the plate would be refused.
TEST(PlateReading, readsPlatesWithDotsThatCannotBeSeen) {
    constexpr unsigned bleached = 14036;
    constexpr unsigned bandInFront = 5404;
    constexpr unsigned marksHalfCovered = 15100;
    constexpr unsigned outOfFocusAndCut = 17319;
    for (const unsigned number : {bleached, bandInFront, marksHalfCovered, outOfFocusAndCut}) {
        const Scene scene = makeConditionScene(number);
        const PictureScore score = scorePicture(scene, readPatterns(scene.image));
        EXPECT_TRUE(score.patterns.front().placed) << number;
        EXPECT_EQ(score.patterns.front().strayCorners, 0) << number;
    }
}

TEST(PlateReading, refusesAMirroredPlate) {
    for (const Cover &cover : {Cover(), Cover(halfHidden)}) {
        Photograph taken = takePlate({"", 12, 20, Lens::Straight, 0, 0, cover, 0, 0});
        EXPECT_EQ(readPatterns(taken.image).size(), 1U);
        cv::Mat mirrored(taken.image.size(), CV_8U);
        for (int x = 0; x < mirrored.cols; x++) {
            taken.image.col(mirrored.cols - 1 - x).copyTo(mirrored.col(x));
        }
        EXPECT_TRUE(readPatterns(mirrored).empty());
    }
}

}  // namespace
