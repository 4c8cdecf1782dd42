#include "bench/reader/comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <opencv2/imgproc.hpp>
#include <optional>

#include "bench/reader/scenes.h"
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

// What the reader has of one board.
struct ReaderResult {
    bool read = false;
    bool complete = false;
    int corners = 0;   // where they are
    double error = 0;  // root mean square over its corners, pixels
};

ReaderResult judge(const Scene &scene, const std::vector<pattern_reader::PatternReading> &readings, size_t corners) {
    const PictureScore score = scorePicture(scene, readings);
    const PatternScore &own = score.patterns.front();
    ReaderResult result;
    result.read = own.placed;
    if (own.placed) {
        result.corners = int(own.errors.size());
        result.complete = size_t(own.corners) == corners && own.strayCorners == 0;
        result.error = rmsOf(own.errors);
    }
    return result;
}

void count(DetectorTotals &totals, std::optional<double> error, const ReaderResult &reader, size_t corners,
           unsigned number) {
    if (!error) {
        return;
    }
    totals.found++;
    if (!reader.read) {
        std::printf("  picture %u: found by %s, not by the reader\n", number, totals.name.c_str());
        totals.foundButMissed++;
        return;
    }
    if (!reader.complete) {
        std::printf("  picture %u: found by %s, by the reader with %d of %zu corners\n", number, totals.name.c_str(),
                    reader.corners, corners);
        totals.foundMoreCorners++;
    }
    totals.both++;
    totals.corners += corners;
    totals.ownError += *error * *error * double(corners);
    totals.readerError += reader.error * reader.error * double(corners);
    totals.readerBetter += reader.error <= *error ? 1 : 0;
}

}  // namespace

Comparison compareWithStock(unsigned first, unsigned boards, bool classic) {
    Comparison comparison;
    comparison.classic.name = "findChessboardCorners + cornerSubPix";
    comparison.sectorBased.name = "findChessboardCornersSB";
    std::vector<double> ratios;
    std::vector<double> readerTimes;
    std::vector<double> sectorBasedTimes;
    for (unsigned number = first; unsigned(comparison.pictures) < boards; number++) {
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

        const ReaderResult reader = judge(scene, readings, truth.size());
        comparison.readByReader += reader.read ? 1 : 0;
        comparison.completeByReader += reader.complete ? 1 : 0;
        if (sectorBased) {
            count(comparison.sectorBased, errorOf(*sectorBased, truth, reach), reader, truth.size(), number);
        }
        const std::optional<Corners> coarse =
            classic ? classicCorners(scene.image, size, classicLimitSeconds) : std::nullopt;
        if (coarse) {
            count(comparison.classic, bestRefinedError(scene.image, *coarse, truth, reach), reader, truth.size(),
                  number);
        }
    }
    for (DetectorTotals *totals : {&comparison.classic, &comparison.sectorBased}) {
        const auto corners = double(std::max<size_t>(1, totals->corners));
        totals->ownError = std::sqrt(totals->ownError / corners);
        totals->readerError = std::sqrt(totals->readerError / corners);
    }
    comparison.medianTimeRatio = median(ratios);
    comparison.medianReaderMs = median(readerTimes);
    comparison.medianSectorBasedMs = median(sectorBasedTimes);
    return comparison;
}

}  // namespace reader_bench
