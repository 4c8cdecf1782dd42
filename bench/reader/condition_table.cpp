#include "bench/reader/condition_table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace reader_bench {

namespace {

using pattern_reader::PatternKind;

std::string describe(const ScenePattern &pattern, const PatternScore &score) {
    static const char *const kinds[] = {"Flexible", "tile", "plate"};
    static const char *const visibilities[] = {"completely visible", "partly covered", "cut by the border"};
    const cv::Size2d size = pattern.coded.target->size();
    return cv::format("%s %gx%g, %.1f px, tilt %.0f°, %s, %d %s visible", kinds[int(pattern.coded.kind)], size.width,
                      size.height, pattern.pixelsPerSquare, pattern.tiltDegrees, visibilities[int(pattern.visibility)],
                      score.seenSquares, pattern.coded.kind == PatternKind::Plate ? "marks" : "squares");
}

// The values from which a row is computed.
struct Collected {
    std::vector<float> lengths;  // of all errors, pixels
    std::vector<double> ratios;  // of each pattern: its rms divided by the least rms that the noise allows
    std::vector<double> rms;     // of each pattern
    double squares = 0;
    double biasSquares = 0;
    // Each point's squared error (the mean of both axes) is divided by the variance that the reader states for the
    // point; this is the sum of the quotients. Points without a stated variance are left out, and so are points that
    // the reader calls disturbed.
    double normalised = 0;
    long normalisedCount = 0;
};

void collectErrors(const std::vector<PointError> &errors, Collected &all) {
    if (errors.empty()) {
        return;
    }
    cv::Point2d mean;
    double squares = 0;
    double leastSquares = 0;
    bool leastKnown = true;
    for (const PointError &point : errors) {
        const auto square = double(point.error.dot(point.error));
        all.lengths.push_back(float(std::sqrt(square)));
        squares += square;
        mean += cv::Point2d(point.error) / double(errors.size());
        leastSquares += double(point.least * point.least);
        leastKnown = leastKnown && point.least > 0;
        if (point.sigma > 0 && !point.disturbed) {
            all.normalised += square / 2 / double(point.sigma * point.sigma);
            all.normalisedCount++;
        }
    }
    all.squares += squares;
    all.biasSquares += mean.dot(mean);
    all.rms.push_back(std::sqrt(squares / double(errors.size())));
    if (leastKnown) {
        all.ratios.push_back(std::sqrt(squares / leastSquares));
    }
}

void addPattern(const PatternResult &pattern, Row &row, Collected &all) {
    const PatternScore &score = pattern.score;
    row.patterns++;
    row.read += score.placed ? 1 : 0;
    row.asked += pattern.asked ? 1 : 0;
    row.askedAndRead += pattern.asked && score.placed ? 1 : 0;
    const bool blockWanted = pattern.asked && pattern.whole && pattern.hasBlock;
    row.blocks += blockWanted ? 1 : 0;
    row.blocksRead += blockWanted && score.valuesRead ? 1 : 0;
    row.seenPoints += score.placed ? score.seenPoints : 0;
    row.foundPoints += score.placed ? std::min(int(score.errors.size()), score.seenPoints) : 0;
    row.falseCorners += score.strayCorners;
    row.readAgain += score.moreReadings;
    row.wrongPolarity += score.polarityRight ? 0 : 1;
    collectErrors(score.errors, all);
}

template <typename Value>
double quantile(std::vector<Value> &values, double share) {
    if (values.empty()) {
        return 0;
    }
    const auto place = std::min(values.size() - 1, size_t(share * double(values.size())));
    std::nth_element(values.begin(), values.begin() + std::ptrdiff_t(place), values.end());
    return double(values[place]);
}

std::string number(const char *format, double value) {
    return value > 0 ? cv::format(format, value) : "–";
}

std::string share(long part, long of) {
    return of == 0 ? "–" : cv::format("%ld/%ld", part, of);
}

void printRow(const char *name, const Row &row) {
    const double found = row.seenPoints == 0 ? 0 : 100.0 * double(row.foundPoints) / double(row.seenPoints);
    std::printf("| %s | %s | %s | %s | %s | %s | %s | %s | %s | %s | %d |\n", name,
                share(row.read, row.patterns).c_str(), share(row.askedAndRead, row.asked).c_str(),
                share(row.blocksRead, row.blocks).c_str(), number("%.1f %%", found).c_str(),
                number("%.4f", row.rms).c_str(), number("%.4f", row.percentile95).c_str(),
                number("%.4f", row.bias).c_str(), number("%.2f", row.ratioToLeast).c_str(),
                number("%.2f", row.sigmaVariance).c_str(), row.falsePlaces + row.falseValues + row.falseCorners);
}

}  // namespace

bool isAsked(const Scene &scene, const PatternScore &score) {
    constexpr double leastPixels = 6;
    constexpr double greatestTilt = 60;
    const ScenePattern &pattern = *score.pattern;
    const int least = pattern.coded.kind == PatternKind::Plate ? 12 : 60;
    return !scene.mirrored && pattern.pixelsPerSquare >= leastPixels && pattern.tiltDegrees <= greatestTilt &&
           score.seenSquares >= least;
}

PictureResult resultOf(unsigned number, const Scene &scene,
                       const std::vector<pattern_reader::PatternReading> &readings) {
    PictureResult result;
    result.number = number;
    result.condition = conditionOf(number);
    result.megapixels = double(scene.image.total()) / 1e6;
    PictureScore score = scorePicture(scene, readings);
    result.falsePlaces = score.falsePlaces;
    result.falseValues = score.falseValues;
    for (PatternScore &one : score.patterns) {
        PatternResult pattern;
        pattern.plate = one.pattern->coded.kind == PatternKind::Plate;
        pattern.pixelsPerSquare = one.pattern->pixelsPerSquare;
        pattern.tiltDegrees = one.pattern->tiltDegrees;
        pattern.asked = isAsked(scene, one);
        pattern.whole = one.pattern->visibility == Visibility::Whole &&
                        one.seenPoints == int(one.pattern->coded.target->points().size());
        pattern.hasBlock = one.pattern->coded.hasBlock;
        pattern.text = describe(*one.pattern, one);
        pattern.score = std::move(one);
        pattern.score.pattern = nullptr;
        result.hasPlate = result.hasPlate || pattern.plate;
        result.patterns.push_back(std::move(pattern));
    }
    return result;
}

std::vector<std::string> PictureResult::failures() const {
    std::vector<std::string> lines;
    const auto add = [&](const PatternResult &pattern, const std::string &what) {
        lines.push_back(pattern.text + ": " + what);
    };
    if (falsePlaces > 0) {
        lines.push_back(cv::format("%d FALSE PLACES", falsePlaces));
    }
    if (falseValues > 0) {
        lines.push_back(cv::format("%d FALSE VALUES", falseValues));
    }
    for (const PatternResult &pattern : patterns) {
        const PatternScore &score = pattern.score;
        if (score.strayCorners > 0) {
            add(pattern, cv::format("%d FALSE CORNERS of %d", score.strayCorners, score.corners));
        }
        if (!score.polarityRight) {
            add(pattern, "WRONG POLARITY");
        }
        if (score.moreReadings > 0) {
            add(pattern, cv::format("read %d times", score.moreReadings + 1));
        }
        if (pattern.asked && !score.placed) {
            add(pattern, "not read");
        } else if (pattern.asked && pattern.whole && pattern.hasBlock && !score.valuesRead) {
            add(pattern, "block not read");
        } else if (pattern.asked && int(score.errors.size()) < score.seenPoints * 9 / 10) {
            add(pattern, cv::format("only %zu of %d visible points found", score.errors.size(), score.seenPoints));
        }
    }
    return lines;
}

Row rowOf(const std::vector<PictureResult> &results, const Pick &pick) {
    Row row;
    Collected all;
    for (const PictureResult &result : results) {
        bool picked = false;
        for (const PatternResult &pattern : result.patterns) {
            if (pick(result, pattern)) {
                addPattern(pattern, row, all);
                picked = true;
            }
        }
        if (picked) {
            row.falsePlaces += result.falsePlaces;
            row.falseValues += result.falseValues;
        }
    }
    row.rms = std::sqrt(all.squares / double(std::max<size_t>(1, all.lengths.size())));
    row.medianRms = quantile(all.rms, 0.5);
    row.percentile95 = quantile(all.lengths, 0.95);
    row.bias = std::sqrt(all.biasSquares / double(std::max<size_t>(1, all.rms.size())));
    row.ratioToLeast = quantile(all.ratios, 0.5);
    row.sigmaVariance = all.normalisedCount > 0 ? all.normalised / double(all.normalisedCount) : 0;
    return row;
}

void printConditionTables(const std::vector<PictureResult> &results) {
    for (const bool plates : {false, true}) {
        std::printf(
            "\n| %s | read | required ones read | blocks read | %s found | rms, px | p95, px | bias, px | "
            "error / bound | variance | wrong |\n|---|---|---|---|---|---|---|---|---|---|---|\n",
            plates ? "plates" : "boards", plates ? "marks" : "corners");
        for (size_t i = 0; i < conditions().size(); i++) {
            const Row row = rowOf(results, [&](const PictureResult &picture, const PatternResult &pattern) {
                return picture.condition == i && pattern.plate == plates;
            });
            if (row.patterns > 0) {
                printRow(conditions()[i].text, row);
            }
        }
        printRow("**all**", rowOf(results, [&](const PictureResult &, const PatternResult &pattern) {
                     return pattern.plate == plates;
                 }));
    }
}

}  // namespace reader_bench
