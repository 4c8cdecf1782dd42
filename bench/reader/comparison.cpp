#include "bench/reader/comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <opencv2/imgproc.hpp>
#include <optional>

#include "bench/reader/scoring.h"
#include "bench/reader/stock_detectors.h"

namespace reader_bench {

namespace {

constexpr double classicLimitSeconds = 5;

// Processor time: both run in this one thread, and other programs may be busy.
double milliseconds() {
    return 1000.0 * double(std::clock()) / CLOCKS_PER_SEC;
}

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Root mean square distance to the true corners in any order; nothing when one of them has no corner near it.
std::optional<double> errorOf(const Corners &found, const std::vector<cv::Point2d> &truth, double reach) {
    double sum = 0;
    for (const cv::Point2d &corner : truth) {
        double closest = reach * reach;
        for (const cv::Point2f &p : found) {
            const cv::Point2d d = corner - cv::Point2d(p);
            closest = std::min(closest, d.dot(d));
        }
        if (closest >= reach * reach) {
            return std::nullopt;
        }
        sum += closest;
    }
    return std::sqrt(sum / double(truth.size()));
}

// cornerSubPix with the window that serves this picture best, which no user could know.
std::optional<double> bestRefinedError(const cv::Mat &image, const Corners &coarse,
                                       const std::vector<cv::Point2d> &truth, double reach) {
    std::optional<double> best;
    for (const int window : {2, 3, 5, 8}) {
        Corners refined = coarse;
        cv::cornerSubPix(image, refined, {window, window}, {-1, -1},
                         {cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 40, 0.001});
        const std::optional<double> error = errorOf(refined, truth, reach);
        if (error && (!best || *error < *best)) {
            best = error;
        }
    }
    return best;
}

void count(DetectorTotals &totals, std::optional<double> error, std::optional<double> reader, size_t corners,
           unsigned number) {
    if (!error) {
        return;
    }
    totals.found++;
    if (!reader) {
        std::printf("  picture %u: found by %s, not by the reader\n", number, totals.name.c_str());
        totals.foundButMissed++;
        return;
    }
    totals.both++;
    totals.ownError += *error * *error * double(corners);
    totals.readerError += *reader * *reader * double(corners);
    totals.readerBetter += *reader <= *error ? 1 : 0;
}

}  // namespace

Comparison compareWithStock(unsigned sceneCount, unsigned limit) {
    Comparison comparison;
    comparison.classic.name = "findChessboardCorners + cornerSubPix";
    comparison.sectorBased.name = "findChessboardCornersSB";
    std::vector<double> ratios;
    std::vector<double> readerTimes;
    std::vector<double> sectorBasedTimes;
    size_t classicCornerCount = 0;
    size_t sectorBasedCornerCount = 0;
    for (unsigned number = 0; number < sceneCount && unsigned(comparison.pictures) < limit; number++) {
        if (number % 10 > 6) {
            continue;
        }
        const Scene scene = makeScene(number);
        const ScenePattern &pattern = scene.patterns.front();
        if (pattern.visibility != Visibility::Whole) {
            continue;
        }
        comparison.pictures++;
        std::vector<cv::Point2d> truth;
        for (const cv::Point2d &p : pattern.coded.target->points()) {
            truth.push_back(projectPoint(scene.camera, pattern.placed.pose, p));
        }
        const double reach = pattern.pixelsPerSquare / 3;
        const cv::Size2d squares = pattern.coded.target->size();
        const cv::Size size(int(squares.width) - 1, int(squares.height) - 1);

        double from = milliseconds();
        const auto readings = pattern_reader::readPatterns(scene.image);
        const double readerTime = milliseconds() - from;
        from = milliseconds();
        const std::optional<Corners> sectorBased = sectorBasedCorners(scene.image, size);
        const double sectorBasedTime = milliseconds() - from;
        ratios.push_back(sectorBasedTime / readerTime);
        readerTimes.push_back(readerTime);
        sectorBasedTimes.push_back(sectorBasedTime);

        std::optional<double> readerError;
        const PictureScore score = scorePicture(scene, readings);
        if (score.patterns.front().placed) {
            Corners own;
            for (const pattern_reader::PatternCorner &corner : readings.front().corners) {
                own.push_back(corner.image);
            }
            readerError = errorOf(own, truth, reach);
        }
        comparison.readByReader += readerError ? 1 : 0;
        if (sectorBased) {
            const std::optional<double> error = errorOf(*sectorBased, truth, reach);
            count(comparison.sectorBased, error, readerError, truth.size(), number);
            sectorBasedCornerCount += error && readerError ? truth.size() : 0;
        }
        const std::optional<Corners> classic = classicCorners(scene.image, size, classicLimitSeconds);
        if (classic) {
            const std::optional<double> error = bestRefinedError(scene.image, *classic, truth, reach);
            count(comparison.classic, error, readerError, truth.size(), number);
            classicCornerCount += error && readerError ? truth.size() : 0;
        }
    }
    const auto finish = [](DetectorTotals &totals, size_t corners) {
        totals.ownError = std::sqrt(totals.ownError / double(std::max<size_t>(1, corners)));
        totals.readerError = std::sqrt(totals.readerError / double(std::max<size_t>(1, corners)));
    };
    finish(comparison.classic, classicCornerCount);
    finish(comparison.sectorBased, sectorBasedCornerCount);
    comparison.medianTimeRatio = median(ratios);
    comparison.medianReaderMs = median(readerTimes);
    comparison.medianSectorBasedMs = median(sectorBasedTimes);
    return comparison;
}

}  // namespace reader_bench
