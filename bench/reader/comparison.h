// The reader beside the stock detectors on the same boards: who finds them, how exactly, how fast.
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
    int found = 0;             // boards of which all corners were found where they are
    int foundButMissed = 0;    // of these, not read by the reader
    int foundMoreCorners = 0;  // of these, read by the reader with some corners left out
    // Over the boards found by both, root mean square over the corners each has: pixels.
    double ownError = 0;
    double readerError = 0;
    // The median of the boards' root mean squares: pixels.
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
    // The same boards without marks, the reader being told their size.
    int plainFound = 0;           // with all corners where they are
    double plainMedianError = 0;  // of their root mean squares, pixels
    double medianTimeRatio = 0;   // findChessboardCornersSB by default over the reader; processor time
    double medianReaderMs = 0;
    double medianSectorBasedMs = 0;
};

// Runs over the first so many pictures with a checkerboard seen whole, from the given number on, each with its
// condition. The reader always gets the boards with marks. timesOnly: without the other detectors.
Comparison compareWithStock(unsigned first, unsigned boards, unsigned threads, bool timesOnly);

}  // namespace reader_bench
