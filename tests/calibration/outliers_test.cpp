// Tests which corners and sightings are left out. The estimate is the truth, so nothing has to be solved. All corners
// state the same standard deviation. In the first camera, the true noise is as large as stated. In the second camera,
// it is four times as large.
#include "calibration/outliers.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

constexpr double stated = 0.1;              // the standard deviation that all corners claim, in pixels
constexpr double noiseOf[] = {0.1, 0.4};    // the true standard deviation, for each camera
const Eigen::Vector2d aside = {0.8, -0.6};  // a unit vector; corners are moved along it

class Outliers : public testing::Test {
protected:
    Outliers() {
        std::mt19937 random(2);
        for (Sighting &sighting : scene.observations.sightings) {
            const int camera = cameraOf(sighting);
            sighting = see(scene, sighting.photograph, sighting.print,
                           scene.truth.worldFromPrint[size_t(sighting.print)], noiseOf[camera], random);
            for (SeenCorner &corner : sighting.corners) {
                corner.sigma = stated;
            }
        }
    }

    int cameraOf(const Sighting &sighting) const {
        return scene.observations.photographs[size_t(sighting.photograph)].camera;
    }

    // Returns the index of a camera's first sighting with at least 40 corners.
    size_t sightingOf(int camera) const {
        const auto &all = scene.observations.sightings;
        return size_t(
            std::find_if(all.begin(), all.end(),
                         [&](const Sighting &one) { return cameraOf(one) == camera && one.corners.size() >= 40; }) -
            all.begin());
    }

    // Gives every corner of a sighting its true place, so that a test knows the residuals.
    Sighting &makeExact(size_t number) {
        std::mt19937 random(1);
        Sighting &sighting = scene.observations.sightings[number];
        sighting = see(scene, sighting.photograph, sighting.print, scene.truth.worldFromPrint[size_t(sighting.print)],
                       0, random);
        for (SeenCorner &corner : sighting.corners) {
            corner.sigma = stated;
        }
        return sighting;
    }

    Scene scene = makeScene(stated);
};

TEST_F(Outliers, areJudgedByTheNoiseOfTheirOwnCamera) {
    const std::vector<double> scales = residualScales(scene.observations, scene.truth);
    EXPECT_NEAR(scales[0], 1, 0.04);
    EXPECT_NEAR(scales[1], 4, 0.16);
    for (int camera = 0; camera < 2; camera++) {
        Sighting &sighting = makeExact(sightingOf(camera));
        sighting.corners[0].image += 3.5 * noiseOf[camera] * aside;
        sighting.corners[1].image += 4.5 * noiseOf[camera] * aside;
        sighting.corners[2].isUsed = false;  // as if the reader had found that this corner is disturbed
    }
    Observations decided = scene.observations;
    decideOutliers(scene.observations, decided, scene.truth);
    for (int camera = 0; camera < 2; camera++) {
        const Sighting &sighting = decided.sightings[sightingOf(camera)];
        EXPECT_TRUE(sighting.isUsed);
        EXPECT_TRUE(sighting.corners[0].isUsed) << camera;
        EXPECT_FALSE(sighting.corners[1].isUsed) << camera;
        EXPECT_FALSE(sighting.corners[2].isUsed) << camera;
        EXPECT_TRUE(sighting.corners[3].isUsed) << camera;
        EXPECT_NEAR(sighting.corners[0].sigma / noiseOf[camera], 1, 0.05) << "the standard deviation is corrected";
    }
    EXPECT_FALSE(decideOutliers(scene.observations, decided, scene.truth)) << "the second round changes no decision";
}

TEST_F(Outliers, includeWholeSightingsWithFewGoodCorners) {
    struct Row {
        size_t corners, bad;
        bool isUsed;
    };
    for (const Row &row : {Row{40, 19, true}, Row{40, 21, false}, Row{8, 2, true}, Row{7, 2, false}}) {
        const Scene before = scene;
        const size_t number = sightingOf(0);
        Sighting &sighting = makeExact(number);
        sighting.corners.resize(row.corners);
        for (size_t i = 0; i < row.bad; i++) {
            sighting.corners[i].image += 20 * aside;
        }
        Observations decided = scene.observations;
        EXPECT_TRUE(decideOutliers(scene.observations, decided, scene.truth));
        EXPECT_EQ(decided.sightings[number].isUsed, row.isUsed) << row.corners << ", " << row.bad;
        EXPECT_EQ(std::count_if(decided.sightings[number].corners.begin(), decided.sightings[number].corners.end(),
                                [](const SeenCorner &corner) { return corner.isUsed; }),
                  std::ptrdiff_t(row.isUsed ? row.corners - row.bad : row.corners))
            << "if a sighting is left out, its corners stay marked as used";
        // If the sighting fits later, it is used again.
        scene = before;
        decided.sightings[number] = makeExact(number);
        decided.sightings[number].isUsed = false;
        EXPECT_TRUE(decideOutliers(scene.observations, decided, scene.truth));
        EXPECT_TRUE(decided.sightings[number].isUsed);
        scene = before;
    }
}

}  // namespace
}  // namespace calibration
