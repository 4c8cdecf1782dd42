#include "bench/reader/comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <mutex>
#include <opencv2/imgproc.hpp>
#include <optional>

#include "bench/reader/conditions.h"
#include "bench/reader/scoring.h"
#include "bench/reader/threads.h"

namespace reader_bench {

namespace {

constexpr unsigned limitSeconds = 5;  // processor time of one of OpenCV's detectors for one board
// OpenCV's detectors take minutes for larger boards.
constexpr int mostCorners = 32 * 32;

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// A board, the truth about it, and the reader's results.
struct Board {
    unsigned number = 0;
    cv::Mat image;
    cv::Mat withoutMarks;
    std::vector<cv::Point2d> truth;
    cv::Size corners;
    double reach = 0;  // pixels; a corner farther from the truth counts as not found
    bool read = false;
    bool complete = false;
    int found = 0;     // corners that the reader found
    double error = 0;  // the reader's root mean square error over the corners that it found, pixels
    // The reader's error on the same board without marks. Here the reader is told the board's size. Empty if it misses
    // a corner.
    std::optional<double> plainError;
    double readerSeconds = 0;
    double sectorBasedSeconds = 0;
};

// Takes the distance from each true corner to the closest found corner, and returns the root mean square of these
// distances in pixels. Empty if one of these distances is at least Board::reach.
std::optional<double> errorOf(const Corners &found, const Board &board) {
    double sum = 0;
    for (const cv::Point2d &corner : board.truth) {
        double closest = board.reach * board.reach;
        for (const cv::Point2f &p : found) {
            const cv::Point2d d = corner - cv::Point2d(p);
            closest = std::min(closest, d.dot(d));
        }
        if (closest >= board.reach * board.reach) {
            return std::nullopt;
        }
        sum += closest;
    }
    return std::sqrt(sum / double(board.truth.size()));
}

// The error of cornerSubPix with the best of four window sizes for this picture. This favours OpenCV, because a user
// does not know the true corners and so cannot choose the best window.
std::optional<double> bestRefinedError(const cv::Mat &image, const Corners &coarse, const Board &board) {
    std::optional<double> best;
    for (const int window : {2, 3, 5, 8}) {
        Corners refined = coarse;
        cv::cornerSubPix(image, refined, {window, window}, {-1, -1},
                         {cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 40, 0.001});
        const std::optional<double> error = errorOf(refined, board);
        if (error && (!best || *error < *best)) {
            best = error;
        }
    }
    return best;
}

std::optional<double> plainReaderError(const Board &board) {
    pattern_reader::ReadingOptions options;
    options.board = board.corners;
    Corners corners;
    for (const pattern_reader::PatternReading &reading : pattern_reader::readPatterns(board.withoutMarks, options)) {
        for (const pattern_reader::PatternCorner &corner : reading.corners) {
            corners.push_back(corner.image);
        }
    }
    return errorOf(corners, board);
}

std::optional<double> stockError(const DetectorTotals &detector, const Board &board) {
    const cv::Mat &image = detector.withoutMarks ? board.withoutMarks : board.image;
    const std::optional<Corners> corners = stockCorners(detector.method, image, board.corners, limitSeconds);
    if (!corners) {
        return std::nullopt;
    }
    return detector.method == StockMethod::Classic ? bestRefinedError(image, *corners, board)
                                                   : errorOf(*corners, board);
}

// True if a picture can be compared: it is not mirrored, and it shows a single checkerboard, completely visible and
// with at most mostCorners corners.
bool isComparable(const Scene &scene) {
    if (scene.patterns.size() != 1 || scene.mirrored) {
        return false;
    }
    const ScenePattern &pattern = scene.patterns.front();
    const std::vector<cv::Point2d> &points = pattern.coded.target->points();
    return pattern.coded.kind != pattern_reader::PatternKind::Plate && int(points.size()) <= mostCorners &&
           pattern.visibility == Visibility::Whole && seenPartOf(scene, pattern).points.size() == points.size();
}

std::optional<Board> takeBoard(unsigned number) {
    const Scene scene = makeConditionScene(number);
    if (!isComparable(scene)) {
        return std::nullopt;
    }
    const ScenePattern &pattern = scene.patterns.front();
    Board board;
    board.number = number;
    board.image = scene.image;
    board.withoutMarks = makeConditionScene(number, Marks::LeftOut).image;
    for (const cv::Point2d &p : pattern.coded.target->points()) {
        board.truth.push_back(scene.imageOf(pattern, p));
    }
    board.reach = pattern.pixelsPerSquare / 3;
    const cv::Size2d squares = pattern.coded.target->size();
    board.corners = {int(std::lround(squares.width)) - 1, int(std::lround(squares.height)) - 1};

    double from = threadSeconds();
    const auto readings = pattern_reader::readPatterns(scene.image);
    board.readerSeconds = threadSeconds() - from;
    from = threadSeconds();
    stockCorners(StockMethod::SectorBased, scene.image, board.corners);
    board.sectorBasedSeconds = threadSeconds() - from;

    board.plainError = plainReaderError(board);
    const PictureScore score = scorePicture(scene, readings);
    const PatternScore &own = score.patterns.front();
    board.read = own.placed;
    board.found = int(own.errors.size());
    board.complete = own.placed && own.errors.size() == board.truth.size();
    board.error = rmsOf(own.errors);
    return board;
}

void count(DetectorTotals &totals, const std::optional<double> &error, const Board &board) {
    if (!error) {
        return;
    }
    const char *condition = conditions()[conditionOf(board.number)].id;
    totals.found++;
    if (!board.read) {
        std::printf("  picture %u (%s): found by %s, not by the reader\n", board.number, condition,
                    totals.name.c_str());
        totals.foundButMissed++;
        return;
    }
    totals.foundMoreCorners += board.complete ? 0 : 1;
    const auto corners = double(board.truth.size());
    totals.both++;
    totals.corners += board.truth.size();
    totals.ownError += *error * *error * corners;
    totals.readerError += board.error * board.error * corners;
    if (board.error <= *error) {
        totals.readerBetter++;
    } else {
        std::printf("  picture %u (%s): %s is more accurate: %.4f px, reader %.4f px\n", board.number, condition,
                    totals.name.c_str(), *error, board.error);
    }
}

std::vector<DetectorTotals> makeDetectors() {
    static constexpr struct {
        StockMethod method;
        const char *name;
    } methods[] = {{StockMethod::Classic, "findChessboardCorners + cornerSubPix"},
                   {StockMethod::SectorBased, "findChessboardCornersSB"},
                   {StockMethod::SectorBasedExhaustive, "findChessboardCornersSB, accuracy and exhaustive"}};
    std::vector<DetectorTotals> detectors;
    for (const bool withoutMarks : {false, true}) {
        for (const auto &[method, name] : methods) {
            DetectorTotals totals;
            totals.method = method;
            totals.withoutMarks = withoutMarks;
            totals.name = std::string(name) + (withoutMarks ? ", boards without marks" : "");
            detectors.push_back(totals);
        }
    }
    return detectors;
}

// Returns `count` boards, from picture number `first` on. Pictures that cannot be compared are skipped.
std::vector<Board> takeBoards(unsigned first, unsigned count, unsigned threads) {
    std::vector<Board> boards;
    for (unsigned from = first; boards.size() < count; from += 64) {
        std::vector<std::optional<Board>> some(64);
        inThreads(threads, some.size(), [&](size_t i) { some[i] = takeBoard(from + unsigned(i)); });
        for (std::optional<Board> &board : some) {
            if (board && boards.size() < count) {
                boards.push_back(std::move(*board));
            }
        }
    }
    return boards;
}

}  // namespace

Comparison compareWithStock(unsigned first, unsigned boardCount, unsigned threads, bool timesOnly) {
    const std::vector<Board> boards = takeBoards(first, boardCount, threads);
    Comparison comparison;
    std::vector<double> ratios;
    std::vector<double> readerTimes;
    std::vector<double> sectorBasedTimes;
    std::vector<double> plainErrors;
    for (const Board &board : boards) {
        comparison.boards++;
        comparison.readByReader += board.read ? 1 : 0;
        comparison.completeByReader += board.complete ? 1 : 0;
        if (board.plainError) {
            plainErrors.push_back(*board.plainError);
        }
        ratios.push_back(board.sectorBasedSeconds / board.readerSeconds);
        readerTimes.push_back(1000 * board.readerSeconds);
        sectorBasedTimes.push_back(1000 * board.sectorBasedSeconds);
    }
    comparison.plainFound = int(plainErrors.size());
    comparison.plainMedianError = median(plainErrors);
    comparison.medianTimeRatio = median(ratios);
    comparison.medianReaderMs = median(readerTimes);
    comparison.medianSectorBasedMs = median(sectorBasedTimes);
    if (timesOnly) {
        return comparison;
    }
    comparison.detectors = makeDetectors();
    for (DetectorTotals &totals : comparison.detectors) {
        std::vector<std::optional<double>> errors(boards.size());
        inThreads(threads, boards.size(), [&](size_t i) { errors[i] = stockError(totals, boards[i]); });
        std::vector<double> own;
        std::vector<double> readers;
        for (size_t i = 0; i < boards.size(); i++) {
            count(totals, errors[i], boards[i]);
            if (errors[i] && boards[i].read) {
                own.push_back(*errors[i]);
                readers.push_back(boards[i].error);
            }
        }
        totals.ownMedian = median(own);
        totals.readerMedian = median(readers);
        const auto corners = double(std::max<size_t>(1, totals.corners));
        totals.ownError = std::sqrt(totals.ownError / corners);
        totals.readerError = std::sqrt(totals.readerError / corners);
    }
    return comparison;
}

}  // namespace reader_bench
