#include "bench/reader/optics.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace reader_bench {

namespace {

constexpr int samples = 9;

// Returns a kernel in which each pixel's weight is proportional to the part of its area where isInside is true.
template <typename Inside>
cv::Mat kernelOf(int reach, const Inside &isInside) {
    cv::Mat kernel(2 * reach + 1, 2 * reach + 1, CV_32F, cv::Scalar(0));
    for (int y = -reach; y <= reach; y++) {
        for (int x = -reach; x <= reach; x++) {
            int inside = 0;
            for (int i = 0; i < samples * samples; i++) {
                const int line = i / samples;
                inside += isInside(x + (i % samples + 0.5) / samples - 0.5, y + (line + 0.5) / samples - 0.5) ? 1 : 0;
            }
            kernel.at<float>(y + reach, x + reach) = float(inside);
        }
    }
    return kernel / cv::sum(kernel)[0];
}

cv::Mat blurredByDisc(const cv::Mat &image, double radius) {
    if (radius < 0.3) {
        return image;
    }
    const double r2 = radius * radius;
    const cv::Mat kernel =
        kernelOf(int(std::ceil(radius + 0.5)), [&](double x, double y) { return x * x + y * y <= r2; });
    cv::Mat blurred;
    cv::filter2D(image, blurred, -1, kernel, {-1, -1}, 0, cv::BORDER_REPLICATE);
    return blurred;
}

}  // namespace

void defocus(cv::Mat &image, double radius, const cv::Point2d &slope) {
    const auto radiusAt = [&](double x, double y) {
        return std::abs(radius + slope.x * (x - image.cols / 2.0) + slope.y * (y - image.rows / 2.0));
    };
    double greatest = 0;
    for (const cv::Point &p :
         {cv::Point(0, 0), cv::Point(image.cols, 0), cv::Point(0, image.rows), cv::Point(image.cols, image.rows)}) {
        greatest = std::max(greatest, radiusAt(p.x, p.y));
    }
    if (slope == cv::Point2d() || greatest < 0.3) {
        image = blurredByDisc(image, std::abs(radius));
        return;
    }
    // The picture is blurred with several radii. Each pixel of the result is interpolated between the two blurred
    // pictures whose radii are closest to the pixel's own.
    const int steps = std::clamp(int(std::ceil(greatest / 0.6)), 2, 12);
    const double step = greatest / steps;
    cv::Mat result = cv::Mat::zeros(image.size(), CV_32F);
    for (int i = 0; i <= steps; i++) {
        const cv::Mat level = blurredByDisc(image, i * step);
        for (int y = 0; y < image.rows; y++) {
            const auto *from = level.ptr<float>(y);
            auto *to = result.ptr<float>(y);
            for (int x = 0; x < image.cols; x++) {
                const double weight = 1 - std::abs(radiusAt(x, y) / step - i);
                to[x] += weight > 0 ? float(weight) * from[x] : 0.0F;
            }
        }
    }
    image = result;
}

void moveDuringExposure(cv::Mat &image, const cv::Point2d &way) {
    const double length = std::hypot(way.x, way.y);
    if (length == 0) {
        return;
    }
    const cv::Point2d along = way / length;
    // The kernel is a line half a pixel wide, so it also blurs the picture slightly across the motion.
    constexpr double halfWidth = 0.25;
    const cv::Mat kernel = kernelOf(int(std::ceil(length / 2 + 1)), [&](double x, double y) {
        return std::abs(x * along.x + y * along.y) <= length / 2 && std::abs(x * along.y - y * along.x) <= halfWidth;
    });
    cv::filter2D(image, image, -1, kernel, {-1, -1}, 0, cv::BORDER_REPLICATE);
}

}  // namespace reader_bench
