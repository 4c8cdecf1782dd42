// The reader beside the stock detectors on the same pictures: who finds the board, how exactly, how fast.
#pragma once

#include <string>
#include <vector>

namespace reader_bench {

struct DetectorTotals {
    std::string name;
    int found = 0;             // boards of which all corners were found where they are
    int foundButMissed = 0;    // of these, not read by the reader
    int foundMoreCorners = 0;  // of these, read by the reader with some corners left out
    // Over the boards found by both, root mean square over the corners each has: pixels.
    double ownError = 0;
    double readerError = 0;
    int readerBetter = 0;  // boards on which the reader's error is the smaller one
    int both = 0;
    size_t corners = 0;  // of these boards
};

struct Comparison {
    int pictures = 0;
    int readByReader = 0;
    int completeByReader = 0;  // with every corner
    DetectorTotals classic;    // findChessboardCorners with cornerSubPix
    DetectorTotals sectorBased;
    double medianTimeRatio = 0;  // findChessboardCornersSB over the reader
    double medianReaderMs = 0;
    double medianSectorBasedMs = 0;
};

// Runs over so many scenes with one checkerboard seen whole, from the given one on; classic: with
// findChessboardCorners, too.
Comparison compareWithStock(unsigned first, unsigned boards, bool classic);

}  // namespace reader_bench
