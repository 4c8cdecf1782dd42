// Tests the joint solve with computed corners. It must find the values from which the corners were computed, and the
// derivatives that it uses must be right. Prints that are not linked by photographs must stay in separate groups.
#include "calibration/joint_solve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include "calibration/sighting_residuals.h"
#include "calibration/start_values.h"
#include "tests/calibration/computed_scene.h"

namespace {

using namespace calibration;

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
    // The cost is half the sum of the squared residuals, and a corner has two residuals of variance 1.
    EXPECT_NEAR(*cost / corners, 1, 0.1);
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

TEST(JointSolve, computesTheDerivativesOfItsResiduals) {
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

TEST(JointSolve, keepsUnlinkedPrintsInSeparateGroups) {
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
