// Tests the numbers that say how far a result can be trusted. For the rotation and the points of a print, random errors
// with the estimated covariance are simulated, and the numbers are compared with the spread of these errors.
#include "calibration/trust.h"

#include <gtest/gtest.h>
#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

constexpr double noise = 0.1;

Calibration unjudged(const Scene &scene, const std::vector<ShapePrior> &priors = {}) {
    Calibration calibration;
    calibration.observations = scene.observations;
    calibration.estimate = scene.truth;
    calibration.freedom.shapes = {{PrintShape::ratio}, {0, 1, 2, 3, 4, 5}};
    calibration.freedom.priors = priors;
    calibration.covariance = covarianceOf(scene.observations, calibration.freedom, scene.truth).value();
    return calibration;
}

cv::Matx33d rotationOf(const Eigen::Vector3d &vector) {
    cv::Matx33d matrix;
    cv::Rodrigues(cv::Vec3d(vector.x(), vector.y(), vector.z()), matrix);
    return matrix;
}

Eigen::Matrix3d spreadOf(const std::vector<Eigen::Vector3d> &values) {
    Eigen::Vector3d mean = Eigen::Vector3d::Zero();
    for (const Eigen::Vector3d &value : values) {
        mean += value / double(values.size());
    }
    Eigen::Matrix3d spread = Eigen::Matrix3d::Zero();
    for (const Eigen::Vector3d &value : values) {
        spread += (value - mean) * (value - mean).transpose() / double(values.size());
    }
    return spread;
}

TEST(Trust, givesTheSpreadOfAPrintsPoseAndOfItsPoints) {
    const Scene scene = makeScene(noise);
    Calibration calibration = unjudged(scene);
    judgeTrust(calibration);
    const RigidMotion &pose = scene.truth.worldFromPrint[1];
    const PrintShape &shape = scene.truth.shapes[1];
    const Eigen::MatrixXd covariance = calibration.covariance.print(1);
    ASSERT_EQ(covariance.rows(), 6 + 6);
    const Eigen::MatrixXd root = covariance.llt().matrixL();
    constexpr int runs = 6000;
    const std::vector<size_t> points{0, size_t(columns) - 1, size_t(columns * rows) - 1};
    std::vector<Eigen::Vector3d> turns;
    std::vector<std::vector<Eigen::Vector3d>> places(points.size());
    std::mt19937 random(11);
    std::normal_distribution<double> normal;
    const cv::Matx33d before = rotationOf(pose.rotation);
    for (int run = 0; run < runs; run++) {
        Eigen::VectorXd error(12);
        std::generate(error.data(), error.data() + 12, [&] { return normal(random); });
        error = root * error;
        const cv::Matx33d after = rotationOf(pose.rotation + error.head<3>());
        cv::Vec3d turn;
        cv::Rodrigues(after * before.t(), turn);  // about the axes of the world
        turns.emplace_back(turn[0], turn[1], turn[2]);
        for (size_t i = 0; i < points.size(); i++) {
            auto numbers = shape.numbers;
            for (int k = 0; k < 6; k++) {
                numbers[size_t(k)] += error(6 + k);
            }
            const Eigen::Vector2d drawn = scene.observations.prints[1].points[points[i]];
            const Eigen::Vector3d printed = printedPoint(numbers.data(), shape.reach, drawn).place;
            const cv::Vec3d turned = after * cv::Vec3d(printed.x(), printed.y(), printed.z());
            places[i].push_back(Eigen::Vector3d(turned[0], turned[1], turned[2]) + pose.translation +
                                error.segment<3>(3));
        }
    }
    // With this number of runs, an estimated standard deviation is itself uncertain by 1 % (one sigma).
    const PrintTrust &trust = calibration.prints[1];
    const Eigen::Vector3d degrees = spreadOf(turns).diagonal().cwiseSqrt() * 180 / CV_PI;
    for (int axis = 0; axis < 3; axis++) {
        EXPECT_NEAR(trust.rotationSigma[axis] / degrees[axis], 1, 0.04) << axis;
        EXPECT_NEAR(trust.translationSigma[axis] / std::sqrt(covariance(3 + axis, 3 + axis)), 1, 1e-9);
    }
    for (size_t i = 0; i < points.size(); i++) {
        const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> worst(spreadOf(places[i]));
        EXPECT_NEAR(trust.pointSigmas[points[i]] / std::sqrt(worst.eigenvalues()(2)), 1, 0.04) << i;
    }
}

TEST(Trust, knowsTheDistanceAndTheResidualsOfEachCamera) {
    const Scene scene = makeScene(noise);
    Calibration calibration = unjudged(scene);
    judgeTrust(calibration);
    for (int camera = 0; camera < 2; camera++) {
        std::vector<double> distances;
        int corners = 0;
        for (const Sighting &sighting : scene.observations.sightings) {
            const Photograph &photograph = scene.observations.photographs[size_t(sighting.photograph)];
            if (photograph.camera == camera) {
                Eigen::Vector3d middle = Eigen::Vector3d::Zero();  // of the corners that are seen
                for (const SeenCorner &corner : sighting.corners) {
                    middle.head<2>() += scene.observations.prints[size_t(sighting.print)].points[size_t(corner.point)] /
                                        double(sighting.corners.size());
                }
                const Eigen::Vector3d inWorld = scene.truth.worldFromPrint[size_t(sighting.print)] * middle;
                const Eigen::Vector3d inRig = scene.truth.rigFromWorld[size_t(photograph.moment)] * inWorld;
                distances.push_back((scene.truth.cameraFromRig[size_t(camera)] * inRig).norm());
                corners += int(sighting.corners.size());
            }
        }
        std::sort(distances.begin(), distances.end());
        const CameraTrust &trust = calibration.cameras[size_t(camera)];
        EXPECT_NEAR(trust.distance, distances[distances.size() / 2], 1e-9);
        EXPECT_NEAR(trust.rms, noise * std::sqrt(2), 0.005);
        EXPECT_EQ(trust.corners, corners);
        EXPECT_NEAR(trust.sigmas[2], std::sqrt(calibration.covariance.intrinsics(camera)(2, 2)), 1e-12);
    }
}

TEST(Trust, saysIfOnlyThePriorDeterminesTheSizeOfAPrint) {
    const Scene scene = makeScene(noise);
    ShapePrior exact;
    exact.sigma = {1e-7, 1e-7, 1e-7};
    Calibration calibration = unjudged(scene, {ShapePrior(), exact});
    judgeTrust(calibration);
    EXPECT_TRUE(calibration.prints[0].isDetermined);
    EXPECT_FALSE(calibration.prints[1].isDetermined) << "the photographs do not improve on this prior";
    calibration = unjudged(scene);
    judgeTrust(calibration);
    EXPECT_TRUE(calibration.prints[1].isDetermined);
}

TEST(Trust, showsALensThatDiffersBetweenTheHalvesOfThePhotographs) {
    Scene scene = makeScene(noise);
    Scene changed = scene;
    changed.truth.intrinsics[0](4) += 0.05;  // k1
    seeAgain(changed, noise, 4);
    seeAgain(scene, noise, 4);
    ASSERT_EQ(scene.observations.sightings.size(), changed.observations.sightings.size());
    for (size_t i = 0; i < scene.observations.sightings.size(); i++) {
        Sighting &sighting = scene.observations.sightings[i];
        if (scene.observations.photographs[size_t(sighting.photograph)].moment % 2 == 1) {
            sighting = changed.observations.sightings[i];
        }
    }
    Calibration calibration = unjudged(scene);
    judgeTrust(calibration);
    ASSERT_TRUE(calibration.cameras[0].halves && calibration.cameras[1].halves);
    // Returns the rms of a map in those cells in which the lens is known well.
    const auto rmsOf = [&](const PictureMap &map, int camera) {
        const PictureMap &uncertainty = calibration.cameras[size_t(camera)].uncertainty;
        double squares = 0;
        int count = 0;
        for (size_t i = 0; i < map.values.size(); i++) {
            if (uncertainty.values[i] && *uncertainty.values[i] < 0.1) {
                squares += std::pow(map.values[i].value(), 2);
                count++;
            }
        }
        EXPECT_GT(count, 100);
        return std::sqrt(squares / count);
    };
    const CameraTrust &trust = calibration.cameras[0];
    const PictureMap truth =
        projectionDifference(scene.observations.cameras[0], scene.truth.intrinsics[0], changed.truth.intrinsics[0],
                             trust.distance, trust.halves->columns, trust.halves->rows, &trust.uncertainty);
    const double expected = rmsOf(truth, 0);
    EXPECT_GT(expected, 0.1);
    EXPECT_NEAR(rmsOf(*trust.halves, 0) / expected, 1, 0.2);
    EXPECT_LT(rmsOf(*calibration.cameras[1].halves, 1), 0.5 * expected) << "camera 1 did not change";
}

}  // namespace
}  // namespace calibration
