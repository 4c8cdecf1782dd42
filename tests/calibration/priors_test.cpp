// Tests the priors of lenses and prints, which decide whatever the photographs do not determine. Also tests how prints
// that the user has measured change the scale and the priors.
#include <gtest/gtest.h>

#include <cmath>

#include "calibration/calibrate.h"
#include "calibration/joint_solve.h"
#include "calibration/print_freedom.h"
#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

// Makes the corners' standard deviations so large that the priors decide.
void makeWorthless(Observations &observations) {
    for (Sighting &sighting : observations.sightings) {
        for (SeenCorner &corner : sighting.corners) {
            corner.sigma = 1e4;
        }
    }
}

TEST(Priors, limitWhatTheCornersDoNotDetermine) {
    Scene scene = makeScene(0.1);
    scene.observations.cameras[0].lens = LensModel::Pinhole12;
    scene.truth.intrinsics[0].conservativeResizeLike(Eigen::VectorXd::Zero(16));
    useFirstCameraOnly(scene);
    makeWorthless(scene.observations);
    Freedom freedom;
    freedom.shapes = {{}, {PrintShape::scale, PrintShape::ratio, PrintShape::shear}};
    freedom.priors.resize(2);
    freedom.priors[1].sigma = {0.004, 0.001, 0.003};
    const std::optional<Covariance> covariance = covarianceOf(scene.observations, freedom, scene.truth);
    ASSERT_TRUE(covariance);
    const auto sigmaOf = [&](const Eigen::MatrixXd &block, Eigen::Index i) {
        return std::sqrt(block(i, i) / covariance->varianceFactor());
    };
    for (int i = 0; i < 3; i++) {
        EXPECT_NEAR(sigmaOf(covariance->shape(1), i) / freedom.priors[1].sigma[size_t(i)], 1, 0.01) << i;
    }
    // The squared distance, in focal lengths, from the principal point (610, 440) to the picture's farthest corner. The
    // standard deviations of the priors follow from it (calibration/lens_prior.h).
    const double r2 = std::pow(610 / 1100.0, 2) + std::pow(460 / 1090.0, 2);
    const double expected[] = {0.3 / r2,  0.3 / (r2 * r2), 0.3 / (r2 * r2 * r2),  // k4, k5, k6
                               0.005,     0.005 / r2,      0.005,
                               0.005 / r2};  // s1 to s4
    for (int i = 0; i < 7; i++) {
        EXPECT_NEAR(sigmaOf(covariance->intrinsics(0), 9 + i) / expected[i], 1, 0.02) << i;
    }
}

TEST(Priors, pullTheSolveTowardsTheirMeans) {
    Scene scene = makeScene(0.1);
    scene.observations.cameras[0].lens = LensModel::Pinhole8;
    scene.truth.intrinsics[0].conservativeResizeLike(Eigen::VectorXd::Zero(12));
    useFirstCameraOnly(scene);
    makeWorthless(scene.observations);
    Estimate estimate = scene.truth;
    estimate.intrinsics[0].tail(3) << 0.02, -0.02, 0.02;
    SolveOptions options;
    options.freedom.shapes = {{PrintShape::ratio}, {PrintShape::scale, PrintShape::ratio, PrintShape::shear}};
    options.freedom.priors.resize(2);
    options.freedom.priors[1].mean = {0, 0.002, 0};
    options.freedom.priors[1].sigma = {0.005, 0.001, 0.005};
    ASSERT_TRUE(solveJointly(scene.observations, options, estimate));
    EXPECT_NEAR(estimate.shapes[0].numbers[PrintShape::ratio], 0, 1e-4);
    EXPECT_NEAR(estimate.shapes[1].numbers[PrintShape::scale], 0, 1e-4);
    EXPECT_NEAR(estimate.shapes[1].numbers[PrintShape::ratio], 0.002, 1e-4);
    EXPECT_NEAR(estimate.shapes[1].numbers[PrintShape::shear], 0, 1e-4);
    EXPECT_EQ(estimate.shapes[1].numbers[PrintShape::bend], scene.truth.shapes[1].numbers[PrintShape::bend]);
    EXPECT_LT(estimate.intrinsics[0].tail(3).cwiseAbs().maxCoeff(), 1e-3) << "k4 to k6";
    // The first print defines the world's coordinate system, and the first camera defines the rig's coordinate system.
    // So neither of them moves.
    EXPECT_EQ(estimate.worldFromPrint[0].translation, Eigen::Vector3d(0, 0, 0));
    EXPECT_EQ(estimate.worldFromPrint[0].rotation, Eigen::Vector3d(0, 0, 0));
    EXPECT_EQ(estimate.cameraFromRig[0].translation, Eigen::Vector3d(0, 0, 0));
}

TEST(MeasuredPrints, fixTheScaleAndLimitTheRatio) {
    const Scene scene = makeScene(0.1);
    struct Row {
        std::vector<MeasuredPrint> measured;
        std::vector<std::vector<int>> free;  // for each print, the indices of the shape numbers that may vary
        std::vector<double> scale, ratioMean, ratioSigma;
    };
    const double sqrtOf = std::log(1.01 * 0.997) / 2;
    const double ratioOf = std::log(1.01 / 0.997);
    for (const Row &row : {
             Row{{}, {{1, 2}, {0, 1, 2}}, {0, 0.7}, {0, 0}, {0.005, 0.005}},
             Row{{{0, {1.01, 0.997}}}, {{1, 2}, {0, 1, 2}}, {sqrtOf, 0.7}, {ratioOf, 0}, {0.001, 0.005}},
             Row{{{1, {1.01, 0.997}}}, {{0, 1, 2}, {1, 2}}, {0.7, sqrtOf}, {0, ratioOf}, {0.005, 0.001}},
         }) {
        Estimate estimate = scene.truth;
        for (PrintShape &shape : estimate.shapes) {
            shape.numbers[PrintShape::scale] = 0.7;
        }
        Freedom freedom;
        setShapes(scene.observations, {Bend::Flat, Bend::Flat}, row.measured, estimate, freedom);
        EXPECT_EQ(freedom.shapes, row.free);
        for (size_t print = 0; print < 2; print++) {
            EXPECT_NEAR(estimate.shapes[print].numbers[PrintShape::scale], row.scale[print], 1e-12);
            EXPECT_EQ(estimate.shapes[print].numbers[PrintShape::bend], 0) << "the print must be flat";
            EXPECT_NEAR(freedom.priors[print].mean[PrintShape::ratio], row.ratioMean[print], 1e-12);
            EXPECT_EQ(freedom.priors[print].sigma[PrintShape::ratio], row.ratioSigma[print]);
        }
    }
}

TEST(MeasuredPrints, scaleAllLengths) {
    Scene scene = makeScene(0.05);
    scene.truth.shapes[0].numbers = {0.003, 0.002};
    scene.truth.shapes[1].numbers = {-0.002, 0.001};
    seeAgain(scene, 0.05);
    useFirstCameraOnly(scene);
    const Eigen::Vector3d place = scene.truth.worldFromPrint[1].translation;
    struct Row {
        std::vector<MeasuredPrint> measured;
        double factor;  // found lengths divided by true lengths
    };
    for (const Row &row : {
             Row{{}, std::exp(-0.003)},  // without a measurement, the first print counts as exact, but it is too large
             Row{{{0, {std::exp(0.004), std::exp(0.002)}}}, 1},
             Row{{{1, {std::exp(-0.0015), std::exp(-0.0025)}}}, 1},
             Row{{{1, {1.01 * std::exp(-0.0015), 1.01 * std::exp(-0.0025)}}}, 1.01},
         }) {
        CalibrateOptions options;
        options.lens = LensModel::Pinhole5;
        options.mayBend = false;
        options.measured = row.measured;
        const Calibration result = calibrate(scene.observations, options);
        EXPECT_LT((result.estimate.worldFromPrint[1].translation - row.factor * place).norm(), 0.1);
        const double scale = result.estimate.shapes[0].numbers[PrintShape::scale];
        EXPECT_NEAR(scale, 0.003 + std::log(row.factor), 2e-4);
        for (int print = 0; print < 2; print++) {
            const bool isMeasured = !row.measured.empty() && row.measured[0].print == print;
            EXPECT_EQ(result.prints[size_t(print)].isMeasured, isMeasured);
        }
    }
}

}  // namespace
}  // namespace calibration
