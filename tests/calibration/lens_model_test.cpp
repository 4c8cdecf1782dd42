// Compares the lens models with those of OpenCV, and their derivatives with finite differences.
#include "calibration/lens_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <vector>

namespace {

using namespace calibration;

struct Case {
    LensModel lens;
    std::vector<double> coefficients;
};

const Case cases[] = {
    {LensModel::Pinhole4, {-0.21, 0.07, 0.003, -0.002}},
    {LensModel::Pinhole5, {-0.21, 0.07, 0.003, -0.002, 0.02}},
    {LensModel::Pinhole8, {-0.21, 0.07, 0.003, -0.002, 0.02, 0.05, -0.03, 0.01}},
    {LensModel::Pinhole12, {-0.21, 0.07, 0.003, -0.002, 0.02, 0.05, -0.03, 0.01, 0.004, -0.003, 0.002, 0.001}},
    {LensModel::Fisheye, {-0.02, 0.01, -0.004, 0.001}},
};

const Eigen::Vector3d points[] = {{0, 0, 2}, {0.3, -0.2, 1}, {-1.1, 0.7, 2}, {1e-7, 0, 1}, {0.9, 0.8, 1.3}};

std::vector<double> parametersOf(const Case &one) {
    std::vector<double> parameters{810, 790, 642, 355};
    parameters.insert(parameters.end(), one.coefficients.begin(), one.coefficients.end());
    return parameters;
}

TEST(LensModel, projectsAsOpenCvDoes) {
    for (const Case &one : cases) {
        const std::vector<double> parameters = parametersOf(one);
        const cv::Matx33d camera(parameters[0], 0, parameters[2], 0, parameters[1], parameters[3], 0, 0, 1);
        for (const Eigen::Vector3d &point : points) {
            SCOPED_TRACE(testing::Message() << nameOf(one.lens) << " " << point.transpose());
            const std::vector<cv::Point3d> object{{point.x(), point.y(), point.z()}};
            std::vector<cv::Point2d> expected;
            if (one.lens == LensModel::Fisheye) {
                cv::fisheye::projectPoints(object, expected, cv::Vec3d(), cv::Vec3d(), camera, one.coefficients);
            } else {
                cv::projectPoints(object, cv::Vec3d(), cv::Vec3d(), camera, one.coefficients, expected);
            }
            Eigen::Vector2d image;
            ASSERT_TRUE(project(one.lens, parameters.data(), point, image));
            EXPECT_NEAR(image.x(), expected[0].x, 1e-9);
            EXPECT_NEAR(image.y(), expected[0].y, 1e-9);
            Eigen::Vector3d direction;
            ASSERT_TRUE(unproject(one.lens, parameters.data(), image, direction));
            EXPECT_LT((direction - point.normalized()).norm(), 1e-9);
        }
    }
}

TEST(LensModel, computesTheDerivativesOfItsProjection) {
    constexpr double step = 1e-6;
    for (const Case &one : cases) {
        std::vector<double> parameters = parametersOf(one);
        for (Eigen::Vector3d point : points) {
            SCOPED_TRACE(testing::Message() << nameOf(one.lens) << " " << point.transpose());
            Projection projection;
            ASSERT_TRUE(project(one.lens, parameters.data(), point, projection));
            const auto difference = [&](double &number) {
                const double before = number;
                Eigen::Vector2d more;
                Eigen::Vector2d less;
                number = before + step;
                EXPECT_TRUE(project(one.lens, parameters.data(), point, more));
                number = before - step;
                EXPECT_TRUE(project(one.lens, parameters.data(), point, less));
                number = before;
                return Eigen::Vector2d((more - less) / (2 * step));
            };
            for (int i = 0; i < 3; i++) {
                EXPECT_LT((difference(point[i]) - projection.byPoint.col(i)).norm(), 2e-5) << i;
            }
            for (int i = 0; i < parameterCount(one.lens); i++) {
                EXPECT_LT((difference(parameters[size_t(i)]) - projection.byParameters.col(i)).norm(), 2e-5) << i;
            }
        }
    }
}

TEST(LensModel, projectsPointsBehindTheCameraOnlyIfItIsAFisheye) {
    const std::vector<double> parameters = parametersOf(cases[4]);
    const Eigen::Vector3d behind(1, 0.4, -0.2);
    Eigen::Vector2d image;
    ASSERT_TRUE(project(LensModel::Fisheye, parameters.data(), behind, image));
    Eigen::Vector3d direction;
    ASSERT_TRUE(unproject(LensModel::Fisheye, parameters.data(), image, direction));
    EXPECT_LT((direction - behind.normalized()).norm(), 1e-9);
    EXPECT_FALSE(project(LensModel::Pinhole4, parameters.data(), behind, image));
}

}  // namespace
