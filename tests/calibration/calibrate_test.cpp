// Whole calibrations of computed corners, good and bad.
#include "calibration/calibrate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "tests/calibration/computed_scene.h"

namespace {

using namespace calibration;

void expectTruth(const Calibration &result, const Scene &scene) {
    for (size_t camera = 0; camera < 2; camera++) {
        ASSERT_EQ(result.observations.cameras[camera].lens == LensModel::Fisheye, camera == 1);
        const Eigen::VectorXd &lens = result.estimate.intrinsics[camera];
        const Eigen::VectorXd sigma = result.covariance.intrinsics(int(camera)).diagonal().cwiseSqrt();
        for (int i = 0; i < 2; i++) {
            EXPECT_NEAR(lens(i), scene.truth.intrinsics[camera](i), 4 * sigma(i));
            EXPECT_LT(sigma(i), 0.002 * lens(i));
        }
    }
    EXPECT_LT((result.estimate.worldFromPrint[1].translation - scene.truth.worldFromPrint[1].translation).norm(), 0.2);
    EXPECT_NEAR(result.estimate.shapes[1].numbers[PrintShape::ratio], -0.004, 3e-4);
}

TEST(Calibrate, choosesLensesAndBendsThatPredict) {
    const Scene scene = makeScene(0.05);
    const Calibration result = calibrate(scene.observations);
    expectTruth(result, scene);
    EXPECT_TRUE(result.leftOut.empty());
    EXPECT_NEAR(result.rms(), 0.05 * std::sqrt(2), 0.01);
    EXPECT_EQ(result.freedom.shapes[0].size(), 2U) << "the first print is flat";
    EXPECT_EQ(result.freedom.shapes[1].size(), 6U) << "the second is bent, but not more than a quadratic";
    ASSERT_TRUE(result.halves[0]);
    EXPECT_LT(*result.halves[0]->greatest(), 1);
}

TEST(Calibrate, leavesOutWhatDoesNotFitAndSaysWhy) {
    Scene scene = makeScene(0.05);
    std::vector<Sighting> &sightings = scene.observations.sightings;
    const auto bySecondPrint = [](const Sighting &one) { return one.print == 1; };
    const auto moved = std::find_if(sightings.begin(), sightings.end(), bySecondPrint) - sightings.begin();
    RigidMotion elsewhere = scene.truth.worldFromPrint[1];
    elsewhere.translation.x() += 5;
    std::mt19937 random(1);
    sightings[size_t(moved)] = see(scene, sightings[size_t(moved)].photograph, 1, elsewhere, 0.05, random);
    const auto misread =
        std::find_if(sightings.begin() + moved + 3, sightings.end(), bySecondPrint) - sightings.begin();
    for (size_t i = 0; i < sightings[size_t(misread)].corners.size(); i++) {
        sightings[size_t(misread)].corners[i].image += Eigen::Vector2d(double(i * 37 % 11), double(i * 53 % 13));
    }
    // One corner of each sighting is displaced, about one in fifty.
    for (size_t i = 0; i < sightings.size(); i++) {
        sightings[i].corners[i % sightings[i].corners.size()].image += Eigen::Vector2d(3, -4);
    }
    const Calibration result = calibrate(scene.observations);
    expectTruth(result, scene);
    ASSERT_EQ(result.leftOut.size(), 2U);
    for (const LeftOut &one : result.leftOut) {
        EXPECT_TRUE(one.sighting == moved || one.sighting == misread);
        EXPECT_EQ(one.misfit, one.sighting == moved ? Misfit::Moved : Misfit::Unclear);
    }
}

TEST(Calibrate, refusesWhatDeterminesNothing) {
    Scene scene = makeScene(0.05);
    Observations none = scene.observations;
    none.sightings.clear();
    EXPECT_THROW(calibrate(none), CalibrationImpossible);
    Observations one = scene.observations;
    one.sightings.resize(1);
    EXPECT_THROW(calibrate(one), CalibrationImpossible);
}

}  // namespace
