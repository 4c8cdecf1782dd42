// Simulates many calibrations of one scene and tests that errors are as large as the estimated covariance predicts.
// Also tests in which cases there is no covariance.
#include "calibration/covariance.h"

#include <gtest/gtest.h>
#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>

#include "calibration/projection_uncertainty.h"
#include "tests/calibration/computed_scene.h"

namespace {

using namespace calibration;

TEST(Covariance, tellsHowLargeErrorsAre) {
    constexpr int runs = 60;
    constexpr int cells = 9;  // in each row and each column of a map
    SolveOptions options;
    options.freedom.shapes = {{PrintShape::ratio}, {0, 1, 2, 3, 4, 5}};
    double lens = 0;
    double pose = 0;
    double projected = 0;
    for (int run = 0; run < runs; run++) {
        Scene scene = makeScene(0.1, unsigned(run));
        // These standard deviations are half of the real ones. The variance factor must correct that.
        for (Sighting &sighting : scene.observations.sightings) {
            for (SeenCorner &corner : sighting.corners) {
                corner.sigma = 0.05;
            }
        }
        Estimate estimate = scene.truth;
        ASSERT_TRUE(solveJointly(scene.observations, options, estimate));
        const std::optional<Covariance> covariance = covarianceOf(scene.observations, options.freedom, estimate);
        ASSERT_TRUE(covariance);
        EXPECT_NEAR(covariance->varianceFactor(), 4, 0.6);
        const Eigen::VectorXd lensError = estimate.intrinsics[0] - scene.truth.intrinsics[0];
        lens += lensError.dot(covariance->intrinsics(0).ldlt().solve(lensError)) / double(lensError.size());
        Eigen::VectorXd poseError(6);
        poseError << estimate.worldFromPrint[1].rotation - scene.truth.worldFromPrint[1].rotation,
            estimate.worldFromPrint[1].translation - scene.truth.worldFromPrint[1].translation;
        pose += poseError.dot(covariance->worldFromPrint(1).ldlt().solve(poseError)) / 6;
        const Camera &camera = scene.observations.cameras[0];
        const PictureMap sigma = projectionUncertainty(camera, estimate.intrinsics[0], covariance->intrinsics(0),
                                                       infinitelyFar, cells, cells);
        const PictureMap error = projectionDifference(camera, scene.truth.intrinsics[0], estimate.intrinsics[0],
                                                      infinitelyFar, cells, cells);
        std::vector<double> ratios;
        for (size_t i = 0; i < sigma.values.size(); i++) {
            ASSERT_TRUE(sigma.values[i] && error.values[i]);
            ratios.push_back(*error.values[i] / *sigma.values[i]);
        }
        std::nth_element(ratios.begin(), ratios.begin() + 40, ratios.end());
        projected += ratios[40];
    }
    // The mean of the squared normalised errors is 1 if the covariance is right. Each of the 60 runs contributes at
    // least 6 errors, so the variance of this mean is below 0.006.
    EXPECT_NEAR(lens / runs, 1, 0.2);
    EXPECT_NEAR(pose / runs, 1, 0.2);
    // Each ratio is the length of an error, divided by the standard deviation in the worse direction. The median of the
    // ratios is 0.67 if all errors are along this direction, and 1.18 if errors are equally large in all directions.
    // In all other cases, it is between these two values.
    EXPECT_GT(projected / runs, 0.6);
    EXPECT_LT(projected / runs, 1.25);
}

TEST(Covariance, isAbsentOrLargeIfTheFocalLengthCannotBeKnown) {
    Scene scene = makeScene(0.1);
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0, 0.1);
    // One camera looks straight at one print, always from the same distance.
    scene.observations.cameras.resize(1);
    scene.observations.photographs.clear();
    scene.observations.sightings.clear();
    for (int moment = 0; moment < 4; moment++) {
        scene.observations.photographs.push_back({"", 0, moment});
        Sighting sighting{moment, 0, true, {}};
        for (int point = 0; point < columns * rows; point++) {
            const Eigen::Vector2d drawn = scene.observations.prints[0].points[size_t(point)];
            sighting.corners.push_back(
                {point, Eigen::Vector2d(610 + noise(random), 440 + noise(random)) + 2.1 * drawn, 0.1, true});
        }
        scene.observations.sightings.push_back(sighting);
        scene.truth.rigFromWorld[size_t(moment)] = {Eigen::Vector3d::Zero(), Eigen::Vector3d(0, 0, 500)};
    }
    SolveOptions options;
    Estimate estimate = scene.truth;
    solveJointly(scene.observations, options, estimate);
    const std::optional<Covariance> covariance = covarianceOf(scene.observations, options.freedom, estimate);
    const bool isUnknown = !covariance || std::sqrt(covariance->intrinsics(0)(0, 0)) > 0.05 * estimate.intrinsics[0](0);
    EXPECT_TRUE(isUnknown);
}

TEST(Covariance, countsThePoseOfEachMomentAsUnknown) {
    // About six corners of each print are kept in each photograph, and each corner has two residuals. Two cameras see
    // two prints, so a moment has about 48 residuals. Its pose takes up six of them.
    constexpr int runs = 12;
    double mean = 0;
    for (int run = 0; run < runs; run++) {
        Scene scene = makeScene(0.1, unsigned(100 + run));
        for (Sighting &sighting : scene.observations.sightings) {
            std::vector<SeenCorner> few;
            for (size_t i = 0; i < sighting.corners.size(); i += sighting.corners.size() / 5) {
                few.push_back(sighting.corners[i]);
            }
            sighting.corners = few;
        }
        SolveOptions options;
        options.freedom.shapes = {{PrintShape::ratio}, {0, 1, 2, 3, 4, 5}};
        Estimate estimate = scene.truth;
        ASSERT_TRUE(solveJointly(scene.observations, options, estimate));
        mean += covarianceOf(scene.observations, options.freedom, estimate).value().varianceFactor() / runs;
    }
    EXPECT_NEAR(mean, 1, 0.07);
}

TEST(Covariance, isAbsentIfNothingWasSeen) {
    Scene scene = makeScene(0.1);
    Freedom nothing;
    nothing.intrinsics = nothing.rig = nothing.prints = false;
    const std::optional<Covariance> fixed = covarianceOf(scene.observations, nothing, scene.truth);
    ASSERT_TRUE(fixed) << "there is no covariance if only the poses of the moments are unknown";
    EXPECT_NEAR(fixed->varianceFactor(), 1, 0.1);
    scene.observations.sightings.clear();
    EXPECT_FALSE(covarianceOf(scene.observations, {}, scene.truth));
}

}  // namespace
