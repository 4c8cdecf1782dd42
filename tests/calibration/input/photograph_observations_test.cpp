#include "calibration/input/photograph_observations.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "calibration/input/camera_groups.h"

namespace calibration {
namespace {

using pattern_reader::PatternKind;
using pattern_reader::PatternReading;

// Returns a reading of the corners from `first` to `last` in lattice coordinates.
PatternReading reading(PatternKind kind, int tile, cv::Point first, cv::Point last, double gridSpacing = 0) {
    PatternReading result;
    result.kind = kind;
    result.tile = tile;
    for (int y = first.y; y <= last.y; y++) {
        for (int x = first.x; x <= last.x; x++) {
            result.corners.push_back({cv::Point2f(float(10 * x), float(10 * y)), {x, y}, 0.02F, x == 3 && y == 3});
        }
    }
    if (gridSpacing > 0) {
        result.values.emplace();
        result.values->gridSpacing = gridSpacing;
    }
    return result;
}

PatternReading tile(int number, double gridSpacing = 0) {
    return reading(PatternKind::Tile, number, {2, 2}, {6, 5}, gridSpacing);
}

ReadPhotograph photograph(const std::string &path, const std::vector<PatternReading> &readings, int width = 640) {
    ReadPhotograph result;
    result.file.path = path;
    result.width = width;
    result.height = 480;
    result.readings = readings;
    return result;
}

std::string reasonFor(const CollectedObservations &collected, const std::string &name) {
    for (const UnusedPhotograph &unused : collected.unused) {
        if (unused.name == name) {
            return unused.reason;
        }
    }
    return "used";
}

TEST(PhotographObservations, placeCornersByKindNumberAndBlock) {
    // Tile 0 is a single pattern, and tile n is pattern n - 1 of an assembly. The information block of pattern 1 was
    // never read. Its grid spacing is that of pattern 2, because both belong to one assembly.
    const auto collected =
        collectObservations({photograph("a", {tile(0, 20), tile(3, 10)}), photograph("b", {tile(2)})}, {}, false);
    const Observations &observations = collected.observations;
    ASSERT_EQ(observations.prints.size(), 3U);
    EXPECT_EQ(observations.prints[0].name, "pattern 1");
    EXPECT_EQ(observations.prints[1].number, 2);
    EXPECT_EQ(observations.prints[2].number, -1);
    ASSERT_EQ(observations.sightings.size(), 3U);
    const Sighting &sighting = observations.sightings[0];
    EXPECT_EQ(sighting.print, 2);
    const int point = sighting.corners.front().point;  // at (2, 2) of the lattice, whose middle is (8, 8)
    EXPECT_EQ(observations.prints[2].points[size_t(point)], Eigen::Vector2d(-60, -60));
    EXPECT_EQ(observations.prints[2].cells[size_t(point)], Eigen::Vector2i(1, 1));
    EXPECT_EQ(observations.prints[0].points.size(), 225U);
    EXPECT_EQ(observations.prints[0].points.back(), Eigen::Vector2d(35, 35));
    EXPECT_FLOAT_EQ(float(sighting.corners.front().sigma), 0.02F);
    EXPECT_FALSE(sighting.corners[6].isUsed) << "disturbed";
    EXPECT_EQ(observations.moments, 2);
}

TEST(PhotographObservations, nameTheReasonOfEachPhotographThatGivesNothing) {
    ReadPhotograph broken = photograph("broken", {});
    broken.error = "The picture \"broken\" cannot be opened.";
    ReadPhotograph truncated = photograph("truncated", {tile(1, 12)});
    truncated.isTruncated = true;
    PrintedTarget target;
    target.square = 25;
    std::vector<ReadPhotograph> photographs{
        broken,
        truncated,
        photograph("empty", {}),
        photograph("flexible", {reading(PatternKind::Plane, -1, {100, 100}, {104, 104})}),
        photograph("twice", {tile(1, 12), tile(1)}),
        photograph("other", {tile(1, 16)}),
        photograph("scaled", {tile(1, 12)}, 320),
        photograph("good1", {tile(1, 12), reading(PatternKind::Board, -1, {1, 1}, {9, 6})}),
    };
    for (int i = 2; i < 6; i++) {
        photographs.push_back(photograph("good" + std::to_string(i), {tile(1, 12)}));
    }
    photographs.push_back(photograph("good1", {tile(1, 12)}));
    const auto collected = collectObservations(photographs, target, false);
    EXPECT_EQ(reasonFor(collected, "broken"), broken.error);
    EXPECT_EQ(reasonFor(collected, "truncated"), "The file is cut off before the end of its picture. Copy it again.");
    EXPECT_EQ(reasonFor(collected, "empty"), "No pattern was found in it.");
    EXPECT_EQ(reasonFor(collected, "flexible"), "It shows the Flexible pattern, but its grid spacing is not known.");
    EXPECT_EQ(reasonFor(collected, "twice"),
              "It shows pattern 0 in 2 places, so it is not known which of them is meant.");
    EXPECT_EQ(reasonFor(collected, "other"), "It shows pattern 0 with a grid spacing of 16 mm instead of 12 mm.");
    EXPECT_EQ(reasonFor(collected, "scaled"),
              "It has 320 x 480 pixels, but 12 others have 640 x 480 pixels: it is scaled, cropped or from another "
              "camera.");
    EXPECT_EQ(reasonFor(collected, "good1"), "It was given before.");
    const Observations &observations = collected.observations;
    EXPECT_EQ(observations.photographs.size(), 5U);
    EXPECT_EQ(observations.cameras.size(), 1U);
    ASSERT_EQ(observations.prints.size(), 2U);
    EXPECT_EQ(observations.prints[1].points.size(), 54U);
    EXPECT_EQ(observations.prints[1].points.back(), Eigen::Vector2d(200, 125)) << "from the first inner corner";
}

// In each of two photographs, two pieces of pattern 0 were read that do not belong together.
TEST(PhotographObservations, sayOnceThatAPatternIsShownTwice) {
    PrintedTarget target;
    target.square = 25;
    const std::vector<PatternReading> readings{tile(1, 12), tile(1), reading(PatternKind::Board, -1, {1, 1}, {9, 6})};
    const auto collected = collectObservations({photograph("a", readings), photograph("b", readings)}, target, false);
    EXPECT_EQ(collected.observations.sightings.size(), 2U);
    ASSERT_EQ(collected.notices.size(), 1U) << collected.notices.back();
    EXPECT_EQ(
        collected.notices[0],
        "2 photographs also show pattern 0 in 2 places, so it is not known which of them is meant. This is ignored.");
}

TEST(PhotographObservations, takeFlexiblePatternsFromTheFilesThatWereGiven) {
    // Two parts of the plane with 4 x 3 corners each.
    PrintedTarget target;
    for (const int column : {10, 50}) {
        pattern_reader::PrintedPattern pattern;
        pattern.kind = PatternKind::Plane;
        pattern.firstPoint = {column, 20};
        pattern.size = {4, 3};
        pattern.gridSpacing = 8;
        for (int i = 0; i < 12; i++) {
            pattern.points.emplace_back(4 * (i % 4) + column, 4 * (i / 4));
        }
        target.patterns.push_back(pattern);
    }
    const auto collected =
        collectObservations({photograph("a", {reading(PatternKind::Plane, -1, {51, 20}, {53, 21}), tile(5, 8)}),
                             photograph("b", {reading(PatternKind::Plane, -1, {49, 20}, {53, 21})})},
                            target, false);
    const Observations &observations = collected.observations;
    ASSERT_EQ(observations.prints.size(), 1U) << "only the part that is seen";
    const SeenCorner corner = observations.sightings.at(0).corners.back();
    EXPECT_EQ(observations.prints[0].points[size_t(corner.point)], Eigen::Vector2d(62, 4));
    EXPECT_EQ(reasonFor(collected, "b"), "It shows the Flexible pattern, which is not among the given patterns.");
    ASSERT_EQ(collected.notices.size(), 2U);
    EXPECT_EQ(collected.notices[0],
              "One photograph also shows pattern 4, which is not among the given patterns. This is ignored.");
    EXPECT_EQ(collected.notices[1], "The Flexible pattern is in no photograph.");
}

// Returns a reading of the marks in two columns of a plate's lattice. If the grid spacing is not 0, the information
// block was read, too.
PatternReading plate(double gridSpacing, cv::Point offset) {
    PatternReading result;
    result.kind = PatternKind::Plate;
    for (int y = 2; y <= 14; y += 2) {
        for (const int x : {4, 6}) {
            result.corners.push_back({cv::Point2f(float(10 * x), float(10 * y)), {x, y}, 0.02F, false});
        }
    }
    if (gridSpacing > 0) {
        result.values.emplace();
        result.values->gridSpacing = gridSpacing;
        result.values->offset = offset;
    }
    return result;
}

TEST(PhotographObservations, tellPlatesApartByTheirOffsets) {
    const auto one =
        collectObservations({photograph("a", {plate(30, {0, 0})}), photograph("b", {plate(0, {})})}, {}, false);
    ASSERT_EQ(one.observations.prints.size(), 1U) << "the only plate that is known";
    ASSERT_EQ(one.observations.sightings.size(), 2U);
    const Print &print = one.observations.prints[0];
    EXPECT_EQ(print.points.size(), 49U);
    for (const Sighting &sighting : one.observations.sightings) {
        for (const SeenCorner &corner : sighting.corners) {
            // A lattice step is half a grid spacing, and the middle mark is at (8, 8) of the lattice.
            const Eigen::Vector2d lattice = corner.image / 10;
            EXPECT_EQ(print.points[size_t(corner.point)], (lattice - Eigen::Vector2d(8, 8)) * 15);
        }
    }
    // The plate whose block was not read may be either of the two others, even if the user has given a grid spacing.
    PrintedTarget target;
    target.gridSpacing = 30;
    const auto two = collectObservations(
        {photograph("a", {plate(30, {0, 0})}), photograph("b", {plate(30, {9, 0})}), photograph("c", {plate(0, {})})},
        target, false);
    ASSERT_EQ(two.observations.prints.size(), 2U);
    EXPECT_EQ(two.observations.prints[0].name, "the plate");
    EXPECT_EQ(two.observations.prints[1].name, "the plate (2)");
    EXPECT_EQ(two.observations.prints[1].points[0] - two.observations.prints[0].points[0], Eigen::Vector2d(270, 0));
    EXPECT_EQ(reasonFor(two, "c"), "It shows the plate, which fits more than one of the patterns.");
}

TEST(PhotographObservations, takeOnlyMeasuredCornersAndTheGridSpacingThatMostBlocksState) {
    PatternReading partly = tile(3, 12);
    partly.corners[0].sigma = 0;  // this corner could not be measured
    const auto collected = collectObservations({photograph("a", {tile(3, 16)}), photograph("b", {partly}),
                                                photograph("x/../b2", {tile(3, 12)}), photograph("b2", {tile(3, 12)})},
                                               {}, false);
    ASSERT_EQ(collected.observations.prints.size(), 1U);
    EXPECT_EQ(collected.observations.prints[0].number, 2);
    EXPECT_EQ(collected.observations.prints[0].points.back(), Eigen::Vector2d(42, 42)) << "12 mm, and not 16 mm";
    ASSERT_EQ(collected.observations.sightings.size(), 2U);
    EXPECT_EQ(collected.observations.sightings[0].corners.size(), tile(3).corners.size() - 1);
    EXPECT_EQ(reasonFor(collected, "b2"), "It was given before.");
}

TEST(PhotographObservations, takeTheLargestOfSeveralPlainBoards) {
    PrintedTarget target;
    target.square = 25;
    const PatternReading board = reading(PatternKind::Board, -1, {1, 1}, {9, 6});
    PatternReading texture = board;
    for (auto &corner : texture.corners) {
        corner.image = corner.image / 4 + cv::Point2f(300, 300);
    }
    PatternReading other = board;
    other.orientations = 2;
    for (auto &corner : other.corners) {
        corner.image = corner.image / 2 + cv::Point2f(200, 200);
    }
    const auto collected = collectObservations(
        {photograph("texture", {texture, board}), photograph("two", {board, other})}, target, false);
    ASSERT_EQ(collected.observations.sightings.size(), 1U);
    EXPECT_EQ(collected.observations.sightings[0].corners[0].image, Eigen::Vector2d(10, 10));
    EXPECT_EQ(reasonFor(collected, "two"),
              "It shows the board in 2 places, so it is not known which of them is meant.");
    ASSERT_EQ(collected.notices.size(), 1U);
    EXPECT_EQ(collected.notices[0].find("The board looks the same after a turn"), 0U)
        << "a board that looks the same after half a turn";
}

TEST(PhotographObservations, linkTheCamerasOfARigAndLeaveOutThoseThatSawNothing) {
    std::vector<ReadPhotograph> photographs;
    for (const char *camera : {"blind", "left", "right"}) {
        for (const char *name : {"7", "8", "9"}) {
            const bool isEmpty = std::string(camera) == "blind" || (std::string(camera) == "left" && *name == '7');
            photographs.push_back(photograph(std::string(camera) + "/" + name + ".png",
                                             isEmpty ? std::vector<PatternReading>() : std::vector{tile(1, 12)}));
            photographs.back().file.camera = camera;
        }
    }
    const auto collected = collectObservations(photographs, {}, true);
    const Observations &observations = collected.observations;
    ASSERT_EQ(observations.cameras.size(), 2U);
    EXPECT_EQ(observations.cameras[0].name, "left");
    EXPECT_EQ(observations.cameras[1].name, "right");
    ASSERT_EQ(observations.photographs.size(), 5U);
    std::vector<std::pair<int, int>> taken;
    for (const Photograph &one : observations.photographs) {
        taken.emplace_back(one.camera, one.moment);
    }
    // Moments are numbered from 0 in the order in which they appear. Moments 0 and 1 are those of left/8 and left/9.
    // Moment 2 is that of right/7, because only this camera saw the pattern then.
    EXPECT_EQ(taken, (std::vector<std::pair<int, int>>{{0, 0}, {0, 1}, {1, 2}, {1, 0}, {1, 1}}));
    EXPECT_EQ(observations.moments, 3);
    ASSERT_EQ(collected.notices.size(), 1U);
    EXPECT_EQ(collected.notices[0], "No photograph of blind shows a pattern, so this camera is left out.");
}

TEST(CameraGroups, groupBySizeAndNameAndKeepGivenNames) {
    const auto groups = groupByCamera({{"1", "", "A", 640, 480},
                                       {"2", "", "B", 640, 480},
                                       {"3", "camera", "A", 640, 480},
                                       {"4", "", "A", 640, 480},
                                       {"5", "", "", 0, 0},
                                       {"6", "camera", "B", 320, 240},
                                       {"7", "camera", "B", 640, 480}});
    EXPECT_EQ(groups.cameraOf, (std::vector<int>{0, 1, 2, 0, -1, 2, 2}));
    ASSERT_EQ(groups.cameras.size(), 3U);
    EXPECT_EQ(groups.cameras[0].name, "camera-2") << "the user has given the name \"camera\"";
    EXPECT_EQ(groups.cameras[1].name, "camera-3");
    EXPECT_EQ(groups.reasons[5],
              "has 320 x 240 pixels, but the camera camera has 640 x 480 pixels: it is scaled, cropped or from another "
              "camera");
    std::vector<PhotographOrigin> many(5, {"8", "", "A", 640, 480});
    many.resize(11, {"9", "", "B", 640, 480});
    many.push_back({"10", "", "C", 640, 480});
    EXPECT_EQ(groupByCamera(many).reasons[11], "is not from the camera that took 5 others");
}

TEST(CameraGroups, findTheMomentsOfARig) {
    struct Row {
        std::vector<std::string> paths;
        std::vector<int> moments;
    };
    for (const Row &row : {
             Row{{"l/a1.png", "l/b2.png", "r/b2.jpg", "r/a1.jpg"}, {0, 1, 1, 0}},
             Row{{"left01.jpg", "left12.jpg", "right012.jpg", "right2.jpg"}, {0, 1, 1, 2}},
             Row{{"left1.jpg", "left2.jpg", "front8.jpg", "front9.jpg"}, {0, 1, 0, 1}},
             Row{{"a/x.jpg", "a/y.jpg", "b/z.jpg", "b/w.jpg"}, {0, 1, 0, 1}},
             // If only one of three numbers matches, that counts as chance. The photographs are then paired in order.
             Row{{"left1.jpg", "left2.jpg", "left3.jpg", "right3.jpg", "right4.jpg", "right5.jpg"}, {0, 1, 2, 0, 1, 2}},
         }) {
        std::vector<int> cameras(row.paths.size(), 0);
        std::fill(cameras.begin() + std::ptrdiff_t(cameras.size() / 2), cameras.end(), 1);
        EXPECT_EQ(momentsOfRig(row.paths, cameras), row.moments) << row.paths[0];
    }
    EXPECT_THROW(momentsOfRig({"x.jpg", "y.jpg", "z.jpg"}, {0, 0, 1}), std::runtime_error);
}

}  // namespace
}  // namespace calibration
