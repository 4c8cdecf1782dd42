// Tests the maps of a lens's uncertainty and the maps of the difference between two lenses. The uncertainty of a focal
// length is compared with closed forms. These hold because the cells of the map are symmetric about the principal
// point, so a rotation of the camera explains no part of an error of the focal length. Differences are also compared
// with OpenCV's projection.
#include "calibration/projection_uncertainty.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>

namespace calibration {
namespace {

constexpr int mapColumns = 12;
constexpr int mapRows = 8;
const Camera camera{"a", 1200, 800, LensModel::Pinhole4};

Eigen::VectorXd lensWith(double focal, double k1) {
    Eigen::VectorXd lens(8);
    lens << focal, focal, 599.5, 399.5, k1, 0, 0, 0;  // the principal point is in the middle
    return lens;
}

// Returns the middle of a cell of 100 x 100 pixels, relative to the principal point. The first pixel's centre has the
// coordinates (0, 0), so the first cell's middle has the coordinates (49.5, 49.5).
Eigen::Vector2d cellMiddle(int column, int row) {
    return {100 * column + 49.5 - 599.5, 100 * row + 49.5 - 399.5};
}

TEST(ProjectionUncertainty, ofAFocalLengthGrowsWithTheRadius) {
    constexpr double sigma = 2;
    const Eigen::VectorXd lens = lensWith(1000, 0);
    Eigen::MatrixXd covariance = Eigen::MatrixXd::Zero(8, 8);
    struct Row {
        double sigmaX, sigmaY, correlation;
        double (*expected)(const Eigen::Vector2d &);
    };
    for (const Row &row : {
             Row{sigma, sigma, 1, [](const Eigen::Vector2d &p) { return sigma * p.norm() / 1000; }},
             Row{sigma, 0, 0, [](const Eigen::Vector2d &p) { return sigma * std::abs(p.x()) / 1000; }},
             Row{0, sigma, 0, [](const Eigen::Vector2d &p) { return sigma * std::abs(p.y()) / 1000; }},
             // If the errors in x and y are independent, the direction with the greater error counts.
             Row{sigma, sigma, 0, [](const Eigen::Vector2d &p) { return sigma * p.cwiseAbs().maxCoeff() / 1000; }},
         }) {
        covariance(0, 0) = row.sigmaX * row.sigmaX;
        covariance(1, 1) = row.sigmaY * row.sigmaY;
        covariance(0, 1) = covariance(1, 0) = row.correlation * row.sigmaX * row.sigmaY;
        const PictureMap map = projectionUncertainty(camera, lens, covariance, infinitelyFar, mapColumns, mapRows);
        for (int y = 0; y < mapRows; y++) {
            for (int x = 0; x < mapColumns; x++) {
                ASSERT_TRUE(map.at(x, y));
                EXPECT_NEAR(*map.at(x, y), row.expected(cellMiddle(x, y)), 1e-6) << x << ", " << y;
            }
        }
    }
}

TEST(ProjectionUncertainty, isWhatNoMotionExplains) {
    const Eigen::VectorXd lens = lensWith(4000, 0);
    Eigen::MatrixXd shifted = Eigen::MatrixXd::Zero(8, 8);
    shifted(2, 2) = 9;  // a shift of the principal point looks like a rotation in a narrow field of view
    EXPECT_LT(*projectionUncertainty(camera, lens, shifted, infinitelyFar, mapColumns, mapRows).greatest(), 0.06);
    Eigen::MatrixXd zoomed = Eigen::MatrixXd::Zero(8, 8);
    zoomed.topLeftCorner(2, 2).setConstant(4);
    // A longer focal length looks like a camera that is nearer, but only if the points are not infinitely far away.
    const double farAway = *projectionUncertainty(camera, lens, zoomed, infinitelyFar, mapColumns, mapRows).greatest();
    const double near = *projectionUncertainty(camera, lens, zoomed, 500, mapColumns, mapRows).greatest();
    EXPECT_NEAR(farAway, 2 * cellMiddle(0, 0).norm() / 4000, 1e-6);
    EXPECT_LT(near, 0.02 * farAway);
}

TEST(ProjectionUncertainty, isUnknownWhereTheDistortionFoldsThePictureOver) {
    // The distorted radius r (1 + k1 r^2) is greatest at r = 1 / sqrt(-3 k1), where it is 2/3 of r. Pixels beyond
    // this greatest distorted radius belong to no direction.
    constexpr double k1 = -0.9;
    constexpr double focal = 1000;
    const double greatest = focal * 2 / 3 / std::sqrt(-3 * k1);
    const Eigen::VectorXd lens = lensWith(focal, k1);
    const PictureMap map =
        projectionUncertainty(camera, lens, 1e-4 * Eigen::MatrixXd::Identity(8, 8), 500, mapColumns, mapRows);
    int known = 0;
    for (int y = 0; y < mapRows; y++) {
        for (int x = 0; x < mapColumns; x++) {
            const double radius = cellMiddle(x, y).norm();
            if (std::abs(radius - greatest) > 5) {
                EXPECT_EQ(map.at(x, y).has_value(), radius < greatest) << x << ", " << y;
                known += radius < greatest ? 1 : 0;
            }
        }
    }
    EXPECT_GT(known, 30);
    EXPECT_LT(known, 70);
}

TEST(ProjectionDifference, leavesOutWhatAMotionOfTheCameraExplains) {
    // The lenses differ in their principal points. In a narrow field of view, a rotation of the camera explains this
    // shift, so hardly any difference is left. In a wide field of view, a rotation explains only a part of the shift.
    const Eigen::VectorXd a = lensWith(1000, -0.1);
    Eigen::VectorXd b = a;
    b(2) += 1;
    b(3) -= 2;
    const PictureMap near = projectionDifference(
        camera, lensWith(9000, 0),
        [] {
            Eigen::VectorXd shifted = lensWith(9000, 0);
            shifted(2) += 3;
            return shifted;
        }(),
        infinitelyFar, mapColumns, mapRows);
    EXPECT_LT(*near.greatest(), 0.02) << "in a narrow field of view, a shift is a rotation";
    const PictureMap same = projectionDifference(camera, a, a, 500, mapColumns, mapRows);
    EXPECT_LT(*same.greatest(), 1e-9);
    const PictureMap other = projectionDifference(camera, a, b, infinitelyFar, mapColumns, mapRows);
    EXPECT_GT(*other.greatest(), 0.3) << "in a wide field of view, a shift is not a rotation";
    EXPECT_LT(*other.greatest(), std::hypot(1, 2));
}

TEST(ProjectionDifference, fitsTheMotionOnlyToThePartsThatAreKnown) {
    // The lenses differ by the term k2, which is felt only far from the middle. The uncertainty says that only the
    // middle is known, so the motion must not be fitted to the difference at the edges.
    const Eigen::VectorXd a = lensWith(700, 0);
    Eigen::VectorXd b = a;
    b(5) = 0.05;
    PictureMap uncertainty{mapColumns, mapRows, {}};
    for (int y = 0; y < mapRows; y++) {
        for (int x = 0; x < mapColumns; x++) {
            const bool isMiddle = cellMiddle(x, y).norm() < 150;
            uncertainty.values.push_back(isMiddle ? std::optional(0.01) : std::nullopt);
        }
    }
    const PictureMap weighted = projectionDifference(camera, a, b, 600, mapColumns, mapRows, &uncertainty);
    const PictureMap equal = projectionDifference(camera, a, b, 600, mapColumns, mapRows);
    const cv::Matx33d matrix(a(0), 0, a(2), 0, a(1), a(3), 0, 0, 1);
    const std::vector<double> distortion(b.data() + 4, b.data() + 8);
    for (const auto &[x, y] : {std::pair(0, 0), std::pair(3, 2), std::pair(10, 5), std::pair(5, 3)}) {
        const Eigen::Vector2d pixel = cellMiddle(x, y);
        const std::vector<cv::Point3d> point{{pixel.x() / a(0), pixel.y() / a(1), 1}};
        std::vector<cv::Point2d> image;
        cv::projectPoints(point, cv::Vec3d(), cv::Vec3d(), matrix, distortion, image);
        const double shift = std::hypot(image[0].x - a(2) - pixel.x(), image[0].y - a(3) - pixel.y());
        EXPECT_NEAR(*weighted.at(x, y), shift, 0.02 + 0.05 * shift) << x << ", " << y;
    }
    EXPECT_LT(*equal.at(0, 0), 0.7 * *weighted.at(0, 0)) << "with equal weights, a motion hides part of the difference";
}

}  // namespace
}  // namespace calibration
