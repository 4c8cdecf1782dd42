#include "bench/reader/scoring.h"

#include <cmath>

#include "bench/reader/noise_bound.h"

namespace reader_bench {

namespace {

using pattern_reader::PatternKind;
using pattern_reader::PatternReading;
using pattern_reader::PatternValues;

bool sameValues(const PatternValues &a, const PatternValues &b) {
    const auto same = [](std::optional<double> x, std::optional<double> y) {
        return x.has_value() == y.has_value() && (!x || std::abs(*x - *y) < 1e-9);
    };
    return same(a.gridSpacing, b.gridSpacing) && same(a.thickness, b.thickness) && a.offset == b.offset &&
           a.assemblyPattern == b.assemblyPattern;
}

// True if the formulas of noise_bound.h hold: they need white noise, Gaussian blur, and borders that are printed as
// they are drawn.
bool hasPlainNoise(const Exposure &exposure, const Print &print) {
    return exposure.noiseSigma > 0 && exposure.shotNoise == 0 && exposure.jpegQuality == 0 && !exposure.bayer &&
           exposure.toneGain == 1 && exposure.toneGamma == 1 && exposure.sharpening == 0 &&
           exposure.defocusRadius == 0 && exposure.defocusSlope == cv::Point2d() && exposure.motion == cv::Point2d() &&
           print.inkSpread == 0 && print.halftonePeriod == 0;
}

double leastErrorAt(const Scene &scene, const ScenePattern &pattern, const cv::Point2d &onTarget,
                    const cv::Matx22d &steps) {
    const Exposure &exposure = scene.exposure;
    if (!hasPlainNoise(exposure, pattern.coded.target->print())) {
        return 0;
    }
    // The averaging over a pixel's area adds a variance of 1/12 to that of the blur, and the rounding of grey levels
    // adds 1/12 to that of the noise.
    constexpr double unitVariance = 1 / 12.0;
    LocalView view;
    view.steps = steps;
    view.contrast = scene.contrastAt(pattern, onTarget);
    view.blur = std::sqrt(exposure.blurSigma * exposure.blurSigma + unitVariance);
    view.noise = std::sqrt(exposure.noiseSigma * exposure.noiseSigma + unitVariance);
    return pattern.coded.kind == PatternKind::Plate ? leastMarkError(view) : leastCornerError(view);
}

// Compares the reading's corners with a pattern, and sets `corners`, `strayCorners` and `errors` in `score`. Returns
// true if more than 95 % of the corners are within a quarter of a lattice step of their true positions.
bool agrees(const Scene &scene, const ScenePattern &pattern, const PatternReading &reading, PatternScore &score) {
    constexpr double strayDistance = 0.25;
    score.corners = int(reading.corners.size());
    score.strayCorners = 0;
    score.errors.clear();
    for (const pattern_reader::PatternCorner &corner : reading.corners) {
        const cv::Point2d onTarget(corner.lattice - pattern.coded.origin);
        const cv::Matx22d steps = scene.stepsAt(pattern, onTarget);
        const cv::Point2d error = cv::Point2d(corner.image) - scene.imageOf(pattern, onTarget);
        const cv::Vec2d onPattern = steps.inv() * cv::Vec2d(error.x, error.y);
        if (!(cv::norm(onPattern) <= strayDistance)) {
            score.strayCorners++;
            continue;
        }
        PointError point;
        point.error = error;
        point.least = float(leastErrorAt(scene, pattern, onTarget, steps));
        point.sigma = corner.sigma;
        point.disturbed = corner.disturbed;
        score.errors.push_back(point);
    }
    return score.corners > 0 && score.strayCorners * 20 < score.corners;
}

bool polarityAgrees(const ScenePattern &pattern, const PatternReading &reading) {
    if (pattern.coded.kind == PatternKind::Plate) {
        return true;
    }
    const bool originEven = (pattern.coded.origin.x + pattern.coded.origin.y) % 2 == 0;
    return reading.evenSquaresDark == (pattern.coded.topLeftDark == originEven);
}

PatternScore unreadScore(const Scene &scene, const ScenePattern &pattern) {
    PatternScore score;
    score.pattern = &pattern;
    const SeenPart seen = seenPartOf(scene, pattern);
    score.seenPoints = int(seen.points.size());
    score.seenSquares = seen.squares;
    return score;
}

// If the reading is of the pattern that `score` belongs to, adds it to the score and returns true. If such a reading
// has wrong values, also adds 1 to `falseValues`. Values are wrong if they differ from those in the pattern's
// information block, or if the pattern has no information block.
bool take(const Scene &scene, const PatternReading &reading, PatternScore &score, int &falseValues) {
    const CodedTarget &coded = score.pattern->coded;
    PatternScore measured = score;
    if (coded.kind != reading.kind || coded.tile != reading.tile || !agrees(scene, *score.pattern, reading, measured)) {
        return false;
    }
    if (score.placed) {
        score.moreReadings++;
        score.strayCorners += measured.strayCorners;
    } else {
        score = measured;
        score.placed = true;
        score.polarityRight = polarityAgrees(*score.pattern, reading);
        score.correctedBits = reading.correctedBits;
    }
    if (reading.values) {
        const bool same = coded.hasBlock && sameValues(*reading.values, coded.values);
        score.valuesRead = score.valuesRead || same;
        falseValues += same ? 0 : 1;
    }
    return true;
}

}  // namespace

PictureScore scorePicture(const Scene &scene, const std::vector<PatternReading> &readings) {
    PictureScore score;
    for (const ScenePattern &pattern : scene.patterns) {
        score.patterns.push_back(unreadScore(scene, pattern));
    }
    for (const PatternReading &reading : readings) {
        bool right = false;
        for (size_t i = 0; i < score.patterns.size() && !right && !scene.mirrored; i++) {
            right = take(scene, reading, score.patterns[i], score.falseValues);
        }
        if (!right) {
            score.falsePlaces++;
            score.falseValues += reading.values ? 1 : 0;
        }
    }
    return score;
}

double rmsOf(const std::vector<PointError> &errors) {
    double sum = 0;
    for (const PointError &point : errors) {
        sum += double(point.error.dot(point.error));
    }
    return errors.empty() ? 0 : std::sqrt(sum / double(errors.size()));
}

}  // namespace reader_bench
