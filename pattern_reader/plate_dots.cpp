#include "pattern_reader/plate_dots.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace pattern_reader {

namespace {

// True if at least half of the marks next to a dot were found. Otherwise something blank may cover the place, which
// would look like a missing dot.
bool isInSight(const PlateView &view, cv::Point2d dot) {
    int next = 0;
    int seen = 0;
    for (int y = 1; y <= marksPerSide; y++) {
        for (int x = 1; x <= marksPerSide; x++) {
            if (std::abs(x - dot.x) < 1 && std::abs(y - dot.y) < 1) {
                next++;
                seen += view.hasMark({x, y}) ? 1 : 0;
            }
        }
    }
    return 2 * seen >= next;
}

// Whether a place is far enough from the frame and the marks to show nothing of them in a blurred picture.
bool isClearOfPrint(cv::Point2d at) {
    constexpr double gap = 0.12;
    const double side = marksPerSide + 1;
    const double fromFrame = std::min({at.x, at.y, side - at.x, side - at.y}) - 2 * frameMiddle;
    const cv::Point2d mark(std::clamp(std::round(at.x), 1.0, double(marksPerSide)),
                           std::clamp(std::round(at.y), 1.0, double(marksPerSide)));
    return fromFrame > gap && std::hypot(at.x - mark.x, at.y - mark.y) - markRadius > gap;
}

// The mean and the darkest light on a circle.
struct CircleLight {
    double mean = 0;
    double darkest = 2;
};

// The light on a circle around a dot, without the parts that the frame or a mark darkens. Empty if a part of the circle
// is outside the picture.
std::optional<CircleLight> circleLight(const PlateView &view, cv::Point2d at, double radius) {
    constexpr int points = 12;
    CircleLight circle;
    int used = 0;
    for (int i = 0; i < points; i++) {
        const double angle = 2 * CV_PI * i / points;
        const cv::Point2d here = at + cv::Point2d(std::cos(angle), std::sin(angle)) * radius;
        double one = 0;
        if (!view.sharpLightAt(here, one)) {
            return std::nullopt;
        }
        if (isClearOfPrint(here)) {
            circle.mean += one;
            circle.darkest = std::min(circle.darkest, one);
            used++;
        }
    }
    if (used == 0) {
        return std::nullopt;
    }
    circle.mean /= used;
    return circle;
}

// How much a place looks like a dot: 0 for paper, 1 if it is as dark as a dot can look there. Empty if that cannot be
// determined.
std::optional<double> dotShare(const PlateView &view, cv::Point2d at) {
    // A dot is a ring, so the light is measured along the middle of its line. Blur darkens the hole too.
    constexpr double lineRadius = (pattern_code::dotRadius + pattern_code::dotHoleRadius) / 2;
    const std::optional<CircleLight> around = circleLight(view, at, 0.23);
    const std::optional<CircleLight> line = circleLight(view, at, lineRadius);
    if (!around || !line || around->darkest < 0.5 || around->mean > 1.3) {
        return std::nullopt;
    }
    const double width = (pattern_code::dotRadius - pattern_code::dotHoleRadius) * view.sharpSpacingAt(at);
    const double blur2 = 0.25 + 0.6 / (view.sharpScale() * view.sharpScale());
    return (around->mean - line->mean) / std::erf(width / std::sqrt(8 * blur2));
}

}  // namespace

SeenBlock readDots(const PlateView &view) {
    std::array<double, pattern_code::blockBitCount> shares{};
    std::vector<double> known;
    for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
        const pattern_code::DotPosition position = pattern_code::dotPosition(bit);
        const cv::Point2d dot(position.x, position.y);
        const std::optional<double> share = isInSight(view, dot) ? dotShare(view, dot) : std::nullopt;
        shares[size_t(bit)] = share.value_or(-10);
        if (share) {
            known.push_back(*share);
        }
    }
    SeenBlock seen;
    if (known.size() < 16) {
        return seen;
    }
    // How a dot looks here: about half of all bits are set, so the upper quartile is that of a dot.
    const auto high = known.begin() + std::ptrdiff_t(known.size() * 3 / 4);
    std::nth_element(known.begin(), high, known.end());
    const double full = *high;
    if (full < 0.3) {
        return seen;
    }
    for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
        const double share = shares[size_t(bit)] / full;
        if (share > -0.6 && std::abs(share - 0.5) > 0.15) {
            seen.see(bit, share > 0.5);
        }
    }
    return seen;
}

}  // namespace pattern_reader
