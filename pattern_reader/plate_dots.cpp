#include "pattern_reader/plate_dots.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace pattern_reader {

namespace {

// True if the light just outside a mark can be determined on all four sides. The whole mark is then in the picture.
bool isInPicture(const PlateView &view, cv::Point2d mark) {
    constexpr double reach = markRadius + 0.05;
    double light = 0;
    return view.lightAt(mark - cv::Point2d(reach, 0), light) && view.lightAt(mark + cv::Point2d(reach, 0), light) &&
           view.lightAt(mark - cv::Point2d(0, reach), light) && view.lightAt(mark + cv::Point2d(0, reach), light);
}

// The numbers of marks next to a dot. A mark is hidden if it is inside the picture but was not found. In this case, an
// object may lie on the mark. If the object is blank and also covers the dot, the dot's place looks empty.
struct NextMarks {
    int all = 0;
    int found = 0;
    int hidden = 0;
};

NextMarks marksNextTo(const PlateView &view, cv::Point2d dot) {
    NextMarks marks;
    for (int y = 1; y <= marksPerSide; y++) {
        for (int x = 1; x <= marksPerSide; x++) {
            if (std::abs(x - dot.x) < 1 && std::abs(y - dot.y) < 1) {
                const bool found = view.hasMark({x, y});
                marks.all++;
                marks.found += found ? 1 : 0;
                marks.hidden += !found && isInPicture(view, cv::Point(x, y)) ? 1 : 0;
            }
        }
    }
    return marks;
}

// True if a place is so far from the frame and the marks that these do not darken it even in a blurred picture.
bool isClearOfPrint(cv::Point2d at) {
    constexpr double gap = 0.12;
    const double side = marksPerSide + 1;
    const double fromFrame = std::min({at.x, at.y, side - at.x, side - at.y}) - 2 * frameMiddle;
    const cv::Point2d mark(std::clamp(std::round(at.x), 1.0, double(marksPerSide)),
                           std::clamp(std::round(at.y), 1.0, double(marksPerSide)));
    return fromFrame > gap && std::hypot(at.x - mark.x, at.y - mark.y) - markRadius > gap;
}

// The mean and the lowest light on a circle.
struct CircleLight {
    double mean = 0;
    double darkest = 2;
};

// Returns the light on a circle around a dot, without the parts that the frame or a mark darkens. Empty if the light
// cannot be determined everywhere on the circle, or if the frame and the marks darken all of it.
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

// Returns how much a place looks like a dot: 0 for paper, 1 for a dot in a sharp picture. The result allows for the
// fact that small dots are paler than large ones even in a sharp picture. Empty if the place cannot be measured.
std::optional<double> dotShare(const PlateView &view, cv::Point2d at) {
    // A dot is a printed ring. The light is measured on the circle halfway between the ring's inner and outer edges. It
    // is compared with the paper around the ring and not with the ring's hole, because blur also darkens the hole.
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

// The appearance of a place that may have a dot.
struct DotPlace {
    double share = 0;         // 0 for paper, 1 for a dot in a sharp picture
    bool known = false;       // true if `share` could be measured
    bool canBeEmpty = false;  // true if a dot at this place would be visible
};

DotPlace lookAtDot(const PlateView &view, int bit) {
    const pattern_code::DotPosition position = pattern_code::dotPosition(bit);
    const cv::Point2d dot(position.x, position.y);
    const NextMarks next = marksNextTo(view, dot);
    DotPlace place;
    if (2 * next.found >= next.all) {
        const std::optional<double> share = dotShare(view, dot);
        place.share = share.value_or(0);
        place.known = share.has_value();
        place.canBeEmpty = next.hidden == 0 && !view.isBleached(dot);
    }
    return place;
}

// Returns the usual DotPlace::share of a dot in this picture; empty if dots and paper cannot be told apart. About half
// of the places have a dot, so the upper quartile of all shares is about the median of the dots' shares.
std::optional<double> lookOfDots(const std::array<DotPlace, pattern_code::blockBitCount> &places) {
    std::vector<double> known;
    for (const DotPlace &place : places) {
        if (place.known) {
            known.push_back(place.share);
        }
    }
    if (known.size() < 16) {
        return std::nullopt;
    }
    const auto high = known.begin() + std::ptrdiff_t(known.size() * 3 / 4);
    std::nth_element(known.begin(), high, known.end());
    const double full = *high;
    // In a blurred picture, dots are pale but still differ from paper.
    constexpr double usual = 0.3;
    constexpr double palest = 0.06;
    const auto unclear = std::count_if(known.begin(), known.end(), [&](double share) {
        return share < -0.2 * full || std::abs(share - 0.5 * full) < 0.25 * full;
    });
    const bool isClear = full >= usual || (full >= palest && size_t(unclear) * 12 < known.size());
    return isClear ? std::optional<double>(full) : std::nullopt;
}

}  // namespace

SeenBlock readDots(const PlateView &view) {
    std::array<DotPlace, pattern_code::blockBitCount> places;
    for (int bit = 0; bit < pattern_code::blockBitCount; bit++) {
        places[size_t(bit)] = lookAtDot(view, bit);
    }
    SeenBlock seen;
    const std::optional<double> full = lookOfDots(places);
    for (int bit = 0; full && bit < pattern_code::blockBitCount; bit++) {
        const DotPlace &place = places[size_t(bit)];
        const double share = place.share / *full;
        const bool set = share > 0.5;
        if (place.known && (set || place.canBeEmpty) && share > -0.6 && std::abs(share - 0.5) > 0.15) {
            seen.see(bit, set);
        }
    }
    return seen;
}

}  // namespace pattern_reader
