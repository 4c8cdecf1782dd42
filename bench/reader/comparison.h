// Compares the reader with OpenCV's chessboard detectors on the same boards: how many boards each of them finds, how
// accurately and how fast.
#pragma once

#include <string>
#include <vector>

#include "bench/reader/stock_detectors.h"

namespace reader_bench {

// The results of one of OpenCV's detectors, either on the boards with their marks or on the same boards without marks.
struct DetectorTotals {
    StockMethod method = StockMethod::Classic;
    bool withoutMarks = false;
    std::string name;
    int found = 0;             // boards with every corner found, less than a third of a square from its true place
    int foundButMissed = 0;    // boards of `found` that the reader does not read
    int foundMoreCorners = 0;  // boards of `found` that the reader reads, but not with every corner
    // Root mean square errors in pixels, over the boards that both the detector and the reader found. On each board,
    // the mean square error is taken over the corners that were found. These means are averaged over the boards, each
    // weighted with the number of all corners of its board.
    double ownError = 0;
    double readerError = 0;
    // The medians of the root mean square errors of the same boards, in pixels.
    double ownMedian = 0;
    double readerMedian = 0;
    int readerBetter = 0;  // boards that both found and on which the reader's error is not larger
    int both = 0;
    size_t corners = 0;  // number of corners on the boards that both found
};

struct Comparison {
    int boards = 0;
    int readByReader = 0;
    int completeByReader = 0;  // with every corner
    std::vector<DetectorTotals> detectors;
    // The reader's results on the same boards without marks. The reader is told the size of each board.
    int plainFound = 0;           // boards with all corners in the right places
    double plainMedianError = 0;  // median of their root mean square errors, pixels
    double medianTimeRatio = 0;   // processor time of findChessboardCornersSB with defaults, divided by the reader's
    double medianReaderMs = 0;
    double medianSectorBasedMs = 0;
};

// Uses the first `boards` pictures that can be compared, from picture number `first` on. A picture can be compared
// if it is not mirrored and shows a single checkerboard that is completely visible and has at most 1,024 corners. Its
// condition (see conditions.h) does not matter. A detector's result, even on a board without marks, is compared with
// the reader's result on the same board with marks. If `timesOnly` is true, `detectors` stays empty.
Comparison compareWithStock(unsigned first, unsigned boards, unsigned threads, bool timesOnly);

}  // namespace reader_bench
