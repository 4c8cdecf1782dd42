#include "pattern_reader/corner_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>

namespace {

using namespace pattern_reader;

struct Corner {
    const char *name;
    cv::Point2d at;
    double angle0, angle1;  // of the two borders, degrees
    double sigma;           // of the blur, pixels
    double amplitude;       // grey levels
    double noise;           // standard deviation of a pixel, grey levels
    double tolerance;       // of the fitted position, pixels
};

// Returns a picture of the corner. `gradient` is the relative change of the light per pixel in x and y.
cv::Mat draw(const Corner &corner, uint64_t seed = 7, cv::Point2d gradient = {0, 0}) {
    cv::Mat picture(31, 31, CV_32F);
    const cv::Point2d a(std::cos(corner.angle0 * CV_PI / 180), std::sin(corner.angle0 * CV_PI / 180));
    const cv::Point2d b(std::cos(corner.angle1 * CV_PI / 180), std::sin(corner.angle1 * CV_PI / 180));
    for (int y = 0; y < picture.rows; y++) {
        for (int x = 0; x < picture.cols; x++) {
            const cv::Point2d d = cv::Point2d(x, y) - corner.at;
            const double scale = 1 / (std::sqrt(2.0) * corner.sigma);
            picture.at<float>(y, x) =
                float((120 + corner.amplitude * std::erf(a.cross(d) * scale) * std::erf(d.cross(b) * scale)) *
                      (1 + gradient.dot(d)));
        }
    }
    cv::Mat noise(picture.size(), CV_32F);
    cv::RNG(seed).fill(noise, cv::RNG::NORMAL, 0, corner.noise);
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

// Returns the mean of (error / standard deviation)² over many pictures and both axes. The standard deviation is the one
// that the fit states.
double normalisedVariance(const Corner &corner, cv::Point2d gradient) {
    const CornerBorders borders{{cv::Point2f(20, 0), cv::Point2f(0, 20)}};
    constexpr int pictures = 300;
    CornerPrior prior;
    prior.changes[0].deviation = 20;
    prior.changes[1].deviation = 20;
    prior.blur = float(corner.sigma);
    prior.blurDeviation = 0.2F;
    double sum = 0;
    for (int i = 0; i < pictures; i++) {
        const cv::Mat picture = draw(corner, uint64_t(i + 1), gradient);
        CornerFit fit;
        fit.position = cv::Point2f(15, 15);
        EXPECT_TRUE(fitCorner(picture, borders, 6, CornerParameters::Position, 3, fit)) << corner.name;
        EXPECT_TRUE(refineCorner(picture, borders, 10, prior, 3, fit)) << corner.name;
        const cv::Point2d error = cv::Point2d(fit.position) - corner.at;
        sum += error.dot(error) / (2 * double(fit.sigma) * double(fit.sigma));
    }
    return sum / pictures;
}

// In the last row of the table, a gradient of the light must not move the fitted corner. If the fit assumed uniform
// light, this gradient would move the corner by twice the standard deviation.
TEST(CornerFit, statesStandardDeviationsThatMatchItsErrors) {
    const struct {
        Corner corner;
        cv::Point2d gradient;
    } rows[] = {{{"clean", {15.3, 14.8}, 0, 90, 0.8, 80, 1, 0}, {0, 0}},
                {{"noisy and soft", {14.7, 15.2}, 0, 90, 1.5, 60, 6, 0}, {0, 0}},
                {{"in a gradient of 1 % per pixel", {15.3, 14.8}, 0, 90, 0.8, 60, 2, 0}, {0.006, -0.008}}};
    for (const auto &row : rows) {
        const double variance = normalisedVariance(row.corner, row.gradient);
        EXPECT_GT(variance, 0.8) << row.corner.name;
        EXPECT_LT(variance, 1.25) << row.corner.name;
    }
}

TEST(CornerFit, refusesUniformPicturesAndCornersTooCloseToThePicturesBorder) {
    const CornerBorders upright{{cv::Point2f(1, 0), cv::Point2f(0, 1)}};
    CornerFit fit;
    fit.position = cv::Point2f(15, 15);
    EXPECT_FALSE(fitCorner(cv::Mat(31, 31, CV_8U, cv::Scalar(80)), upright, 5, CornerParameters::Position, 4, fit));
    fit = {};
    fit.position = cv::Point2f(2, 15);
    EXPECT_FALSE(fitCorner(draw({"", {2, 15}, 0, 90, 1, 90, 0, 0}), upright, 5, CornerParameters::Position, 4, fit))
        << "too close to the border";
}

}  // namespace
