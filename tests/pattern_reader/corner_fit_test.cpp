#include "pattern_reader/corner_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>

namespace {

using namespace pattern_reader;

struct Corner {
    const char *name;
    cv::Point2d at;
    double angle0, angle1;  // degrees
    double sigma;
    double amplitude;
    double noise;
    double tolerance;  // pixels
};

cv::Mat draw(const Corner &corner) {
    cv::Mat picture(31, 31, CV_32F);
    const cv::Point2d a(std::cos(corner.angle0 * CV_PI / 180), std::sin(corner.angle0 * CV_PI / 180));
    const cv::Point2d b(std::cos(corner.angle1 * CV_PI / 180), std::sin(corner.angle1 * CV_PI / 180));
    for (int y = 0; y < picture.rows; y++) {
        for (int x = 0; x < picture.cols; x++) {
            const cv::Point2d d = cv::Point2d(x, y) - corner.at;
            const double scale = 1 / (std::sqrt(2.0) * corner.sigma);
            picture.at<float>(y, x) =
                float(120 + corner.amplitude * std::erf(a.cross(d) * scale) * std::erf(d.cross(b) * scale));
        }
    }
    cv::Mat noise(picture.size(), CV_32F);
    cv::RNG(7).fill(noise, cv::RNG::NORMAL, 0, corner.noise);
    cv::Mat result;
    cv::Mat(picture + noise).convertTo(result, CV_8U);
    return result;
}

TEST(CornerFit, findsTheCornerOfADrawnSaddle) {
    const Corner corners[] = {
        {"upright", {15.3, 14.8}, 0, 90, 0.7, 90, 0, 0.01},
        {"turned, blurred", {14.6, 15.4}, 30, 120, 1.5, 80, 0, 0.01},
        {"sheared", {15.2, 15.1}, 10, 60, 0.8, 90, 0, 0.02},
        {"light and dark exchanged", {15.45, 15.45}, -20, 70, 0.9, -90, 0, 0.01},
        {"noisy", {15.3, 14.7}, 20, 110, 0.8, 70, 4, 0.06},
        {"weak", {15.1, 15.3}, 45, 135, 0.8, 10, 0, 0.05},
    };
    for (const Corner &corner : corners) {
        const cv::Mat picture = draw(corner);
        const cv::Point2f axis0(std::cos(float(corner.angle0 * CV_PI / 180)),
                                std::sin(float(corner.angle0 * CV_PI / 180)));
        const cv::Point2f axis1(std::cos(float(corner.angle1 * CV_PI / 180)),
                                std::sin(float(corner.angle1 * CV_PI / 180)));
        CornerFit fit;
        fit.position = cv::Point2f(15, 15);
        ASSERT_TRUE(fitCorner(picture, {{axis0, axis1}}, 6, CornerParameters::PositionAndBlur, 12, fit)) << corner.name;
        EXPECT_NEAR(fit.position.x, corner.at.x, corner.tolerance) << corner.name;
        EXPECT_NEAR(fit.position.y, corner.at.y, corner.tolerance) << corner.name;
        EXPECT_NEAR(fit.blur, corner.sigma, 0.15) << corner.name;
        EXPECT_NEAR(fit.amplitude, corner.amplitude, 3) << corner.name;
        EXPECT_NEAR(fit.middle, 120, 2) << corner.name;
    }
}

TEST(CornerFit, refusesWhatIsNoCorner) {
    const CornerBorders upright{{cv::Point2f(1, 0), cv::Point2f(0, 1)}};
    CornerFit fit;
    fit.position = cv::Point2f(15, 15);
    EXPECT_FALSE(fitCorner(cv::Mat(31, 31, CV_8U, cv::Scalar(80)), upright, 5, CornerParameters::Position, 4, fit));
    fit = {};
    fit.position = cv::Point2f(2, 15);
    EXPECT_FALSE(fitCorner(draw({"", {2, 15}, 0, 90, 1, 90, 0, 0}), upright, 5, CornerParameters::Position, 4, fit))
        << "at the border";
}

}  // namespace
