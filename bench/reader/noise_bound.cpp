#include "bench/reader/noise_bound.h"

#include <algorithm>
#include <cmath>

namespace reader_bench {

namespace {

cv::Vec2d column(const cv::Matx22d &steps, int index) {
    return {steps(0, index), steps(1, index)};
}

// Returns the Fisher information about a border's position, per pixel of the border's length. The position is measured
// at right angles to the border.
double informationPerPixel(const LocalView &view) {
    const double perLevel = view.contrast / view.noise;
    return perLevel * perLevel / (2 * std::sqrt(CV_PI) * view.blur);
}

cv::Matx22d outer(const cv::Vec2d &normal, double weight) {
    return cv::Matx22d(normal[0] * normal[0], normal[0] * normal[1], normal[0] * normal[1], normal[1] * normal[1]) *
           weight;
}

double errorFrom(const cv::Matx22d &information) {
    const double determinant = cv::determinant(information);
    return determinant > 0 ? std::sqrt(cv::trace(information) / determinant) : 0;
}

}  // namespace

double leastCornerError(const LocalView &view) {
    const cv::Vec2d x = column(view.steps, 0);
    const cv::Vec2d y = column(view.steps, 1);
    const double area = std::abs(cv::determinant(view.steps));
    // A mark lies in the centre of a square and is a third as wide. So the distance from a corner of the square to the
    // nearest corner of the mark is a third of the square's diagonal.
    const double toMark = std::min(cv::norm(x + y), cv::norm(x - y)) / 3;
    const double toBorder = area / std::max(cv::norm(x), cv::norm(y));
    const double sine = area / (cv::norm(x) * cv::norm(y));
    // Each border fades near the corner, where it crosses the other one. With the blur s, this shortens the border's
    // useful length by 4 s / (sqrt(pi) * sine), which is the integral of 1 - erf² along the border.
    const double length = 2 * std::min(toMark, toBorder) - 4 * view.blur / (std::sqrt(CV_PI) * sine);
    if (length <= 0 || view.contrast <= 0) {
        return 0;
    }
    cv::Matx22d information;
    for (const cv::Vec2d &along : {x, y}) {
        const cv::Vec2d normal = cv::Vec2d(-along[1], along[0]) / cv::norm(along);
        information += outer(normal, length * informationPerPixel(view));
    }
    return errorFrom(information);
}

double leastMarkError(const LocalView &view) {
    if (view.contrast <= 0) {
        return 0;
    }
    constexpr int pieces = 64;
    cv::Matx22d information;
    for (int i = 0; i < pieces; i++) {
        const double angle = 2 * CV_PI * i / pieces;
        const cv::Vec2d along = view.steps * cv::Vec2d(-std::sin(angle), std::cos(angle)) * (CV_PI / pieces);
        const double length = cv::norm(along);
        information += outer(cv::Vec2d(-along[1], along[0]) / length, length * informationPerPixel(view));
    }
    return errorFrom(information);
}

}  // namespace reader_bench
