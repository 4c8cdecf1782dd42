#include "pattern_reader/plate_dots.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace pattern_reader {

namespace {

// What is known of a dot's surroundings by the marks next to it.
struct DotSurroundings {
    // At least half of these marks were found; a blank cover looks like a place without a dot.
    bool inSight = false;
    // How far from where the plate's map has them, in the image: lens distortion, which a map of planes knows nothing
    // of.
    cv::Point2d shift;
};

DotSurroundings lookAround(const MarkLattice &found, const PlateView &view, cv::Point2d dot) {
    // The two columns and rows of marks on either side; those next to the dot say whether it is in sight.
    const cv::Point first(int(std::lround(dot.x - 1.5)), int(std::lround(dot.y - 1.5)));
    cv::Matx33d matrix = cv::Matx33d::zeros();
    cv::Matx<double, 3, 2> right;
    int next = 0;
    int seen = 0;
    for (int y = std::max(1, first.y); y <= std::min(marksPerSide, first.y + 3); y++) {
        for (int x = std::max(1, first.x); x <= std::min(marksPerSide, first.x + 3); x++) {
            const cv::Point2d mark(x, y);
            const bool isNext = std::abs(x - dot.x) < 1 && std::abs(y - dot.y) < 1;
            const cv::Point2d cell = view.toCell(mark);
            const int index = found.lattice.indexAt({int(std::lround(cell.x)), int(std::lround(cell.y))});
            next += isNext ? 1 : 0;
            if (index >= 0) {
                seen += isNext ? 1 : 0;
                const cv::Point2d shift = cv::Point2d(found.marks[size_t(index)].centre) - view.toImage(mark);
                const cv::Vec3d row(1, x - dot.x, y - dot.y);
                matrix += row * row.t();
                right += row * cv::Vec2d(shift.x, shift.y).t();
            }
        }
    }
    DotSurroundings around;
    around.inSight = 2 * seen >= next;
    // A plane through the marks' shifts; their mean where they do not span one.
    if (std::abs(cv::determinant(matrix)) > 0.5) {
        const cv::Matx<double, 3, 2> plane = matrix.inv() * right;
        around.shift = {plane(0, 0), plane(0, 1)};
    } else if (matrix(0, 0) > 0) {
        around.shift = cv::Point2d(right(0, 0), right(0, 1)) / matrix(0, 0);
    }
    return around;
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

// Light on a circle: the mean and the darkest.
struct CircleLight {
    double mean = 0;
    double darkest = 2;
};

// The light on a circle around a dot, where it is not the frame or a mark that darkens it; nothing when a part of it
// is outside the picture.
std::optional<CircleLight> circleLight(const PlateView &view, cv::Point2d at, cv::Point2d shift, double radius) {
    constexpr int points = 12;
    CircleLight circle;
    int used = 0;
    for (int i = 0; i < points; i++) {
        const double angle = 2 * CV_PI * i / points;
        const cv::Point2d here = at + cv::Point2d(std::cos(angle), std::sin(angle)) * radius;
        double one = 0;
        if (!view.sharpLightAt(here, shift, one)) {
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

// How much of a dot is seen at a place: 0 paper, 1 as dark as a dot can look there; nothing where that cannot be said.
std::optional<double> dotShare(const PlateView &view, cv::Point2d at, cv::Point2d shift) {
    // A dot is a circle's line, so it is looked for along the line; where that is blurred, so is what is inside it.
    constexpr double lineRadius = (pattern_code::dotRadius + pattern_code::dotHoleRadius) / 2;
    const std::optional<CircleLight> around = circleLight(view, at, shift, 0.23);
    const std::optional<CircleLight> line = circleLight(view, at, shift, lineRadius);
    if (!around || !line || around->darkest < 0.5 || around->mean > 1.3) {
        return std::nullopt;
    }
    const double width = (pattern_code::dotRadius - pattern_code::dotHoleRadius) * view.sharpSpacingAt(at);
    const double blur2 = 0.25 + 0.6 / (view.sharpScale() * view.sharpScale());
    return (around->mean - line->mean) / std::erf(width / std::sqrt(8 * blur2));
}

}  // namespace

SeenBlock readDots(const MarkLattice &found, const PlateView &view) {
    std::array<double, pattern_code::blockBitCount> shares{};
    std::vector<double> known;
    for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
        const pattern_code::DotPosition position = pattern_code::dotPosition(bit);
        const cv::Point2d dot(position.x, position.y);
        const DotSurroundings around = lookAround(found, view, dot);
        const std::optional<double> share = around.inSight ? dotShare(view, dot, around.shift) : std::nullopt;
        shares[size_t(bit)] = share.value_or(-10);
        if (share) {
            known.push_back(*share);
        }
    }
    SeenBlock seen;
    if (known.size() < 16) {
        return seen;
    }
    // What a dot looks like here: about half of all bits are set.
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
