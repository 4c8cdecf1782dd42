#include "bench/reader/scoring.h"

#include <cmath>

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

// Measures the reading's corners against a pattern; right when nearly all lie where the camera saw them.
bool agrees(const Scene &scene, const ScenePattern &pattern, const PatternReading &reading, PatternScore &score) {
    score.corners = int(reading.corners.size());
    score.strayCorners = 0;
    score.squaredError = 0;
    for (const pattern_reader::PatternCorner &corner : reading.corners) {
        const cv::Point2d d = scene.imageOf(pattern, corner.lattice) - cv::Point2d(corner.image);
        const double error = std::hypot(d.x, d.y);
        if (error > pattern.pixelsPerSquare / 3) {
            score.strayCorners++;
        } else {
            score.squaredError += error * error;
        }
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

}  // namespace

PictureScore scorePicture(const Scene &scene, const std::vector<PatternReading> &readings) {
    PictureScore score;
    for (const ScenePattern &pattern : scene.patterns) {
        PatternScore one;
        one.pattern = &pattern;
        score.patterns.push_back(one);
    }
    for (const PatternReading &reading : readings) {
        bool right = false;
        for (PatternScore &one : score.patterns) {
            const CodedTarget &coded = one.pattern->coded;
            PatternScore measured = one;
            if (coded.kind != reading.kind || coded.tile != reading.tile ||
                !agrees(scene, *one.pattern, reading, measured)) {
                continue;
            }
            right = true;
            // A second piece of a pattern that is in two parts adds nothing.
            const bool known = one.placed;
            if (!known) {
                one = measured;
                one.placed = true;
                one.polarityRight = polarityAgrees(*one.pattern, reading);
                one.correctedBits = reading.correctedBits;
            }
            if (reading.values) {
                const bool same = coded.hasBlock && sameValues(*reading.values, coded.values);
                one.valuesRead = one.valuesRead || same;
                score.falseValues += same ? 0 : 1;
            }
            break;
        }
        if (!right) {
            score.falsePlaces++;
            score.falseValues += reading.values ? 1 : 0;
        }
    }
    return score;
}

}  // namespace reader_bench
