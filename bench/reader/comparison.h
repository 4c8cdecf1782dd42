// Compares the reader with the stock detectors on the same boards: how many each finds, how accurately and how fast.
#pragma once

#include <string>
#include <vector>

#include "bench/reader/stock_detectors.h"

namespace reader_bench {

// A stock detector on the boards as they are, or on the same pictures with boards that have no marks.
struct DetectorTotals {
    StockMethod method = StockMethod::Classic;
    bool withoutMarks = false;
    std::string name;
    int found = 0;             // boards of which all corners were found in the right places
    int foundButMissed = 0;    // of these, not read by the reader
    int foundMoreCorners = 0;  // of these, read by the reader with some corners left out
    // Root mean square error in pixels, over the boards found by both and the corners that each found.
    double ownError = 0;
    double readerError = 0;
    // The median of the boards' root mean square errors, in pixels.
    double ownMedian = 0;
    double readerMedian = 0;
    int readerBetter = 0;  // boards on which the reader's error is the smaller one
    int both = 0;
    size_t corners = 0;  // of these boards
};

struct Comparison {
    int boards = 0;
    int readByReader = 0;
    int completeByReader = 0;  // with every corner
    std::vector<DetectorTotals> detectors;
    // On the same boards without marks, whose size the reader is given.
    int plainFound = 0;           // boards with all corners in the right places
    double plainMedianError = 0;  // median of their root mean square errors, pixels
    double medianTimeRatio = 0;   // processor time of findChessboardCornersSB with defaults, divided by the reader's
    double medianReaderMs = 0;
    double medianSectorBasedMs = 0;
};

// Compares on the first `boards` pictures with a checkerboard seen whole, starting at picture number `first`, each with
// its condition. The reader always gets the boards with marks. timesOnly: runs only the detectors whose times are
// compared.
Comparison compareWithStock(unsigned first, unsigned boards, unsigned threads, bool timesOnly);

}  // namespace reader_bench
