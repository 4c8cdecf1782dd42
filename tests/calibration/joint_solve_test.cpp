// The joint solve on corners that are computed, not photographed: what was put in must come out.
#include "calibration/joint_solve.h"

#include <gtest/gtest.h>

#include <random>

#include "calibration/sighting_residuals.h"
#include "calibration/start_values.h"

namespace {

using namespace calibration;

constexpr int columns = 9;
constexpr int rows = 7;
constexpr double pitch = 20;  // mm

struct Scene {
    Observations observations;
    Estimate truth;
};

Print makePrint() {
    Print print;
    for (int y = 0; y < rows; y++) {
        for (int x = 0; x < columns; x++) {
            print.points.emplace_back((x - columns / 2) * pitch, (y - rows / 2) * pitch);
        }
    }
    return print;
}

// A pinhole and a fisheye, fixed to each other, look at two prints that stand at an angle. The second print is bent and
// has another scale in x than in y.
Scene makeScene(double noise) {
    Scene scene;
    scene.observations.cameras = {{"a", 1200, 900, LensModel::Pinhole5}, {"b", 1000, 800, LensModel::Fisheye}};
    scene.observations.prints = {makePrint(), makePrint()};
    Estimate &truth = scene.truth;
    truth.intrinsics = {Eigen::VectorXd(9), Eigen::VectorXd(8)};
    truth.intrinsics[0] << 1100, 1090, 610, 440, -0.2, 0.08, 0.001, -0.0005, 0.01;
    truth.intrinsics[1] << 420, 422, 505, 390, -0.02, 0.005, -0.001, 0.0002;
    truth.cameraFromRig = {{}, {{0.02, -0.3, 0.01}, {-110, 5, 8}}};
    truth.hasCamera = {true, true};
    truth.worldFromPrint = {{}, {{0.05, 0.9, -0.1}, {170, 10, -60}}};
    truth.groups = {0, 0};
    truth.shapes.resize(2);
    for (PrintShape &shape : truth.shapes) {
        shape.reach = reachOf(scene.observations.prints[0]);
    }
    truth.shapes[0].numbers[PrintShape::ratio] = 0.002;
    truth.shapes[1].numbers = {0.001, -0.004, 0.0005, 0.6, -0.3, 0.2};
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    for (int moment = 0; moment < 14; moment++) {
        const Eigen::Vector3d turn(0.35 * normal(random), 0.35 * normal(random), 0.5 * normal(random));
        const Eigen::Vector3d middle(-70 + 30 * normal(random), 20 * normal(random), 520 + 60 * normal(random));
        truth.rigFromWorld.push_back({turn, middle});
        truth.hasMoment.push_back(true);
        for (int camera = 0; camera < 2; camera++) {
            scene.observations.photographs.push_back({"", camera, moment});
            for (int print = 0; print < 2; print++) {
                Sighting sighting{int(scene.observations.photographs.size()) - 1, print, true, {}};
                for (int point = 0; point < columns * rows; point++) {
                    const Eigen::Vector3d onPrint =
                        printedPoint(truth.shapes[size_t(print)].numbers.data(), truth.shapes[size_t(print)].reach,
                                     scene.observations.prints[size_t(print)].points[size_t(point)])
                            .place;
                    const Eigen::Vector3d seen =
                        truth.cameraFromRig[size_t(camera)] *
                        (truth.rigFromWorld.back() * (truth.worldFromPrint[size_t(print)] * onPrint));
                    Eigen::Vector2d image;
                    const Camera &by = scene.observations.cameras[size_t(camera)];
                    if (project(by.lens, truth.intrinsics[size_t(camera)].data(), seen, image) && image.x() > 0 &&
                        image.y() > 0 && image.x() < by.width && image.y() < by.height) {
                        image += noise * Eigen::Vector2d(normal(random), normal(random));
                        sighting.corners.push_back({point, image, noise, true});
                    }
                }
                if (sighting.corners.size() >= 12) {
                    scene.observations.sightings.push_back(sighting);
                }
            }
        }
    }
    scene.observations.moments = 14;
    return scene;
}

TEST(JointSolve, findsLensesRigPosesAndShapesFromCornersAlone) {
    const Scene scene = makeScene(0.02);
    std::vector<Eigen::VectorXd> lenses(2);
    for (int camera = 0; camera < 2; camera++) {
        ASSERT_TRUE(startLens(scene.observations, camera, lenses[size_t(camera)]));
    }
    Estimate estimate = startPoses(scene.observations, lenses);
    EXPECT_EQ(estimate.groups, (std::vector<int>{0, 0}));
    SolveOptions options;
    options.freedom.shapes = {{PrintShape::ratio}, {0, 1, 2, 3, 4, 5}};
    const std::optional<double> cost = solveJointly(scene.observations, options, estimate);
    ASSERT_TRUE(cost);
    int corners = 0;
    for (const Sighting &sighting : scene.observations.sightings) {
        corners += int(sighting.corners.size());
    }
    EXPECT_NEAR(*cost / corners, 1, 0.1);  // two residuals of variance 1, halved
    for (size_t camera = 0; camera < 2; camera++) {
        const Eigen::VectorXd error = estimate.intrinsics[camera] - scene.truth.intrinsics[camera];
        EXPECT_LT(error.head<4>().cwiseAbs().maxCoeff(), 0.25) << error.transpose();
    }
    EXPECT_LT((estimate.cameraFromRig[1].translation - scene.truth.cameraFromRig[1].translation).norm(), 0.05);
    EXPECT_LT((estimate.worldFromPrint[1].translation - scene.truth.worldFromPrint[1].translation).norm(), 0.05);
    EXPECT_LT((estimate.worldFromPrint[1].rotation - scene.truth.worldFromPrint[1].rotation).norm(), 3e-4);
    EXPECT_NEAR(estimate.shapes[0].numbers[PrintShape::ratio], 0.002, 5e-5);
    EXPECT_NEAR(estimate.shapes[1].numbers[PrintShape::ratio], -0.004, 5e-5);
    EXPECT_NEAR(estimate.shapes[1].numbers[PrintShape::scale], 0.001, 5e-5);
    EXPECT_NEAR(estimate.shapes[1].numbers[PrintShape::bend], 0.6, 0.02);
}

TEST(JointSolve, hasTheDerivativesOfItsResiduals) {
    const Scene scene = makeScene(0.5);
    const Sighting &sighting = scene.observations.sightings[3];
    for (const double robustScale : {0.0, 3.0}) {
        const SightingResiduals residuals(scene.observations, sighting, robustScale);
        Estimate estimate = scene.truth;
        const BlockPointers blocks = blocksOf(scene.observations, sighting, estimate);
        std::vector<std::vector<double>> jacobians;
        double *pointers[blockCount];
        for (int block = 0; block < blockCount; block++) {
            jacobians.emplace_back(size_t(residuals.rows() * residuals.blockSize(Block(block))));
            pointers[block] = jacobians.back().data();
        }
        Eigen::VectorXd values(residuals.rows());
        ASSERT_TRUE(residuals.evaluate(blocks, values.data(), pointers));
        for (int block = 0; block < blockCount; block++) {
            const int size = residuals.blockSize(Block(block));
            for (int i = 0; i < size; i++) {
                double &number = const_cast<double *>(blocks[size_t(block)])[i];
                const double step = 1e-6 * std::max(1.0, std::abs(number));
                const double before = number;
                Eigen::VectorXd more(residuals.rows());
                Eigen::VectorXd less(residuals.rows());
                number = before + step;
                ASSERT_TRUE(residuals.evaluate(blocks, more.data(), nullptr));
                number = before - step;
                ASSERT_TRUE(residuals.evaluate(blocks, less.data(), nullptr));
                number = before;
                for (int row = 0; row < residuals.rows(); row++) {
                    const double expected = (more(row) - less(row)) / (2 * step);
                    ASSERT_NEAR(jacobians[size_t(block)][size_t(row * size + i)], expected,
                                1e-4 + 1e-5 * std::abs(expected))
                        << "robust scale " << robustScale << ", block " << block << ", number " << i;
                }
            }
        }
    }
}

TEST(JointSolve, keepsPrintsApartThatNoPhotographLinks) {
    Scene scene = makeScene(0.02);
    scene.observations.prints.push_back(makePrint());
    for (Sighting &sighting : scene.observations.sightings) {
        const int moment = scene.observations.photographs[size_t(sighting.photograph)].moment;
        sighting.print = moment % 2 == 0 ? sighting.print : 2;
    }
    const Estimate estimate = startPoses(scene.observations, scene.truth.intrinsics);
    EXPECT_EQ(estimate.groups[0], estimate.groups[1]);
    EXPECT_NE(estimate.groups[0], estimate.groups[2]);
    EXPECT_TRUE(estimate.isOrigin(2));
    EXPECT_GE(estimate.groups[2], 0);
}

}  // namespace
