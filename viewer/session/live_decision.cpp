#include "viewer/session/live_decision.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <map>
#include <tuple>

namespace {

using Place = std::complex<double>;

constexpr size_t leastCorners = 8;
constexpr double greatestMotion = 1;  // pixels between two frames, root mean square
constexpr int leastStillFrames = 3;   // in a row
constexpr double alwaysSharp = 1.5;   // pixels of blur
constexpr double neverSharp = 2.5;    // pixels of blur
// A frame with a blur between alwaysSharp and neverSharp is sharp if its blur is at most this many times the least blur
// so far.
constexpr double sharpRatio = 1.4;

// A frame's view differs from that of a photograph if at least one of the limits below is exceeded, if the two pictures
// have fewer than `leastCorners` corners in common, or if they differ in size. A frame's view is new if it differs from
// the views of all photographs.
constexpr double newShare = 0.4;      // share of the frame's corners that the photograph does not show
constexpr double newDistance = 0.12;  // between the centroids of the corners, as a share of the picture's diagonal
constexpr double newScale = 1.25;     // times nearer or farther
constexpr double newTurn = 0.7;       // radians around the line of sight
constexpr double newShape = 0.05;     // change of shape, as a share of the target's extent: about 25 degrees of tilt

struct Pair {
    Place now, before;
};

std::vector<Pair> commonCorners(const PatternReadings &now, const PatternReadings &before) {
    using Name = std::tuple<int, int, int, int>;  // kind, tile, column, row
    const auto nameOf = [](const pattern_reader::PatternReading &reading, const pattern_reader::PatternCorner &corner) {
        return Name(int(reading.kind), reading.tile, corner.lattice.x, corner.lattice.y);
    };
    std::map<Name, Place> places;
    for (const auto &reading : before) {
        for (const auto &corner : reading.corners) {
            places[nameOf(reading, corner)] = Place(corner.image.x, corner.image.y);
        }
    }
    std::vector<Pair> pairs;
    for (const auto &reading : now) {
        for (const auto &corner : reading.corners) {
            const auto found = places.find(nameOf(reading, corner));
            if (found != places.end()) {
                pairs.push_back({Place(corner.image.x, corner.image.y), found->second});
            }
        }
    }
    return pairs;
}

size_t cornersOf(const PatternReadings &readings) {
    size_t count = 0;
    for (const auto &reading : readings) {
        count += reading.corners.size();
    }
    return count;
}

}  // namespace

bool isSimilar(const TargetView &frame, const TargetView &other) {
    const std::vector<Pair> pairs = commonCorners(*frame.readings, *other.readings);
    if (frame.size != other.size || pairs.size() < leastCorners ||
        double(pairs.size()) < (1 - newShare) * double(cornersOf(*frame.readings))) {
        return false;
    }
    Place middleNow;
    Place middleBefore;
    for (const Pair &pair : pairs) {
        middleNow += pair.now / double(pairs.size());
        middleBefore += pair.before / double(pairs.size());
    }
    // `similarity` is the rotation and scale that best map `before` to `now`, as a complex factor. The distances that
    // remain after this mapping (`left`) show a change of shape.
    Place product;
    double extentNow = 0;
    double extentBefore = 0;
    for (const Pair &pair : pairs) {
        product += (pair.now - middleNow) * std::conj(pair.before - middleBefore);
        extentNow += std::norm(pair.now - middleNow);
        extentBefore += std::norm(pair.before - middleBefore);
    }
    const Place similarity = product / std::max(extentBefore, 1e-9);
    double left = 0;
    for (const Pair &pair : pairs) {
        left += std::norm(pair.now - middleNow - similarity * (pair.before - middleBefore));
    }
    const double diagonal = std::hypot(frame.size.width(), frame.size.height());
    return std::abs(middleNow - middleBefore) < newDistance * diagonal &&
           std::abs(std::log(std::max(std::abs(similarity), 1e-9))) < std::log(newScale) &&
           std::abs(std::arg(similarity)) < newTurn && std::sqrt(left / std::max(extentNow, 1e-9)) < newShape;
}

LiveState LiveDecision::judge(const TargetView &frame, std::optional<double> blur) {
    const bool hasPattern = cornersOf(*frame.readings) >= leastCorners;
    stillFrames = hasPattern && isStill(frame) ? stillFrames + 1 : 0;
    last = frame;
    if (!hasPattern) {
        return LiveState::NoPattern;
    }
    if (stillFrames < leastStillFrames) {
        return LiveState::Moving;
    }
    if (!blur || !isSharp(*blur)) {
        return LiveState::Blurred;
    }
    return isKnown(frame) ? LiveState::Known : hasEnough ? LiveState::Enough : LiveState::Worth;
}

bool LiveDecision::isStill(const TargetView &frame) const {
    if (!last.readings || last.size != frame.size) {
        return false;
    }
    const std::vector<Pair> pairs = commonCorners(*frame.readings, *last.readings);
    double squares = 0;
    for (const Pair &pair : pairs) {
        squares += std::norm(pair.now - pair.before);
    }
    return pairs.size() >= leastCorners && squares < greatestMotion * greatestMotion * double(pairs.size());
}

// Cameras differ in how sharp their pictures can be. So if the blur is between alwaysSharp and neverSharp, the frame is
// compared with the sharpest frame so far.
bool LiveDecision::isSharp(double blur) {
    sharpest = std::min(sharpest.value_or(blur), blur);
    return blur <= std::max(alwaysSharp, std::min(sharpRatio * *sharpest, neverSharp));
}

bool LiveDecision::isKnown(const TargetView &frame) const {
    const auto isLike = [&frame](const TargetView &view) { return isSimilar(frame, view); };
    return (photographs && std::any_of(photographs->begin(), photographs->end(), isLike)) ||
           std::any_of(kept.begin(), kept.end(), isLike);
}
