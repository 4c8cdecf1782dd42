// Tests the values from which the solve starts, and the geometry with which these values are computed.
#include "calibration/start_values.h"

#include <gtest/gtest.h>
#include <Eigen/LU>

#include <cmath>
#include <opencv2/calib3d.hpp>

#include "calibration/planar_pose.h"
#include "tests/calibration/computed_scene.h"

namespace calibration {
namespace {

Eigen::Matrix3d openCvRotation(const Eigen::Vector3d &vector) {
    cv::Matx33d matrix;
    cv::Rodrigues(cv::Vec3d(vector.x(), vector.y(), vector.z()), matrix);
    return Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(matrix.val);
}

TEST(RigidMotion, agreesWithOpenCvAtEveryAngle) {
    const Eigen::Vector3d axis = Eigen::Vector3d(0.3, -0.8, 0.5).normalized();
    for (const double angle : {0.0, 1e-9, 1e-5, 9.9e-5, 1.01e-4, 9e-4, 1.1e-3, 0.05, 0.25, 1.0, 2.9, 3.1}) {
        SCOPED_TRACE(angle);
        const Eigen::Vector3d vector = angle * axis;
        EXPECT_LT((rotationMatrix(vector) - openCvRotation(vector)).norm(), 1e-11);
        EXPECT_LT((rotationVector(openCvRotation(vector)) - vector).norm(), 1e-7);
        // If the rotation vector changes by a small `change`, the new rotation is the old rotation followed by a small
        // turn. The rotation vector of this turn is leftJacobian * change.
        for (int i = 0; i < 3; i++) {
            const double step = 1e-5;
            Eigen::Vector3d more = vector;
            Eigen::Vector3d less = vector;
            more[i] += step;
            less[i] -= step;
            const Eigen::Matrix3d turn = openCvRotation(more) * openCvRotation(less).transpose();
            const Eigen::Matrix3d skew = (turn - turn.transpose()) / (4 * step);
            const Eigen::Vector3d expected(skew(2, 1), skew(0, 2), skew(1, 0));
            EXPECT_LT((leftJacobian(vector).col(i) - expected).norm(), 1e-8) << i;
        }
    }
    for (const Eigen::Vector3d &to : {Eigen::Vector3d(0, 0, -5), Eigen::Vector3d(0, 0, 2), Eigen::Vector3d(1, 1, -9)}) {
        const Eigen::Matrix3d turn = rotationBetween({0, 0, 3}, to);
        EXPECT_LT((turn * Eigen::Vector3d::UnitZ() - to.normalized()).norm(), 1e-12);
        EXPECT_NEAR(turn.determinant(), 1, 1e-12);
    }
}

TEST(PlanarPose, findsWhichWayAFarPrintLeans) {
    // From so far away, a print that leans to one side looks nearly like one that leans to the other.
    Scene scene = makeScene(0);
    scene.observations.cameras[0].lens = LensModel::Pinhole4;
    scene.truth.intrinsics[0] = Eigen::VectorXd::Zero(8);
    scene.truth.intrinsics[0].head(4) << 4000, 4000, 600, 450;
    scene.truth.shapes[0] = PrintShape();
    std::mt19937 random(1);
    for (int i = 0; i < 40; i++) {
        const double lean = i % 2 == 0 ? 0.5 : -0.4;
        const Eigen::Vector3d axis = i % 4 < 2 ? Eigen::Vector3d::UnitX() : Eigen::Vector3d::UnitY();
        const RigidMotion pose{lean * axis, {100, -60, 4000}};
        scene.truth.rigFromWorld[0] = pose;
        const Sighting sighting = see(scene, 0, 0, {}, 0.25, random);
        ASSERT_EQ(sighting.corners.size(), size_t(columns * rows));
        const auto found = planarPose(scene.observations, sighting, scene.truth.intrinsics[0], PrintShape());
        ASSERT_TRUE(found);
        EXPECT_LT((found->cameraFromPrint.rotation - pose.rotation).norm(), 0.15) << lean << " about " << axis;
        EXPECT_LT(found->rms, 1.4);
    }
}

TEST(StartLens, findsFocalLengthsFromWideToLong) {
    struct Row {
        LensModel lens;
        double focal, distance;  // pixels, mm
    };
    for (const Row &row : {Row{LensModel::Pinhole4, 650, 230}, Row{LensModel::Pinhole4, 8000, 3600},
                           Row{LensModel::Fisheye, 330, 130}, Row{LensModel::Fisheye, 1300, 600}}) {
        Scene scene = makeScene(0);
        scene.observations.cameras[0].lens = row.lens;
        scene.truth.intrinsics[0] = Eigen::VectorXd::Zero(8);
        scene.truth.intrinsics[0].head(4) << row.focal, row.focal, 590, 460;
        for (RigidMotion &pose : scene.truth.rigFromWorld) {
            pose.translation *= row.distance / 520;
        }
        seeAgain(scene, 0.05);
        useFirstCameraOnly(scene);
        Eigen::VectorXd found;
        ASSERT_TRUE(startLens(scene.observations, 0, found));
        EXPECT_NEAR(found(0) / row.focal, 1, 0.12) << nameOf(row.lens);
        EXPECT_NEAR(found(1) / row.focal, 1, 0.12) << nameOf(row.lens);
    }
}

// Makes a scene with three cameras. The third never takes a photograph at the same moment as the first.
Scene makeChain() {
    Scene scene = makeScene(0.02);
    Observations &observations = scene.observations;
    observations.cameras.push_back(observations.cameras[1]);
    scene.truth.intrinsics.push_back(scene.truth.intrinsics[1]);
    scene.truth.cameraFromRig.push_back({{-0.1, 0.4, 0.05}, {-200, 10, 20}});
    scene.truth.hasCamera.push_back(true);
    observations.photographs.clear();
    for (int moment = 0; moment < observations.moments; moment++) {
        const bool isFirstHalf = moment < observations.moments / 2;
        // For each moment, the photograph of the camera with the higher index is listed first, because the result must
        // not depend on the order of the list.
        observations.photographs.push_back({"", isFirstHalf ? 1 : 2, moment});
        observations.photographs.push_back({"", isFirstHalf ? 0 : 1, moment});
    }
    seeAgain(scene, 0.02);
    return scene;
}

TEST(StartPoses, linkTheCamerasOfARigThroughOtherCameras) {
    const Scene scene = makeChain();
    for (int camera = 0; camera < 3; camera++) {
        EXPECT_EQ(rigOrigin(scene.observations, camera), 0);
    }
    const Estimate estimate = startPoses(scene.observations, scene.truth.intrinsics);
    EXPECT_EQ(estimate.groups, (std::vector<int>{0, 0}));
    for (size_t camera = 0; camera < 3; camera++) {
        ASSERT_TRUE(estimate.hasCamera[camera]);
        const RigidMotion &truth = scene.truth.cameraFromRig[camera];
        EXPECT_LT((estimate.cameraFromRig[camera].translation - truth.translation).norm(), 5) << camera;
        EXPECT_LT((estimate.cameraFromRig[camera].rotation - truth.rotation).norm(), 0.01) << camera;
    }
    EXPECT_LT((estimate.worldFromPrint[1].translation - scene.truth.worldFromPrint[1].translation).norm(), 3);
}

TEST(StartPoses, followTheBestSightingsFirst) {
    // In one sighting of the second print, the corners are wrong by many pixels. The link between the prints must come
    // from another photograph.
    Scene scene = makeScene(0.02);
    std::mt19937 random(9);
    std::normal_distribution<double> blur(0, 120);
    bool isSpoilt = false;
    for (Sighting &sighting : scene.observations.sightings) {
        if (sighting.print == 1 && !isSpoilt) {
            isSpoilt = true;
            for (SeenCorner &corner : sighting.corners) {
                corner.image += Eigen::Vector2d{blur(random), blur(random)};
            }
        }
    }
    const Estimate estimate = startPoses(scene.observations, scene.truth.intrinsics);
    EXPECT_LT((estimate.worldFromPrint[1].translation - scene.truth.worldFromPrint[1].translation).norm(), 3);
    EXPECT_LT((estimate.worldFromPrint[1].rotation - scene.truth.worldFromPrint[1].rotation).norm(), 0.03);
}

}  // namespace
}  // namespace calibration
