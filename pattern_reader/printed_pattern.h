// What was printed: patterns as their file describes them, and the corners of a reading in the pattern's millimetres.
//
// Files are the JSON that the camera library writes and the PDF that has it as an attachment. Nothing is drawn or
// measured here, and the real size of a print is not known.
//
// Coordinates: millimetres in the pattern's own frame as its file says, x to the right, y down, z = 0. Without a file
// the origin is that of a pattern without an offset: a tile's and a plate's middle corner or mark, the plane's
// (136, 136), a plain board's first inner corner. Every function may be called from any thread at the same time.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

struct PrintedPattern {
    PatternKind kind = PatternKind::Board;
    int tile = -1;         // as in PatternReading
    cv::Point firstPoint;  // lattice coordinates of the first point
    int latticeStep = 1;   // lattice coordinates from one point to the next
    cv::Size size;         // columns and rows of points
    double gridSpacing = 0;
    std::vector<cv::Point2d> points;  // row after row
};

// The patterns of a file. Throws std::runtime_error with a sentence that names the file if it cannot be read, is
// neither a pattern's JSON nor a PDF with one, or has a pattern of a kind that the reader does not know.
PATTERN_READER_API std::vector<PrintedPattern> loadPrintedPatterns(const std::string &path);

// Where the reading's corners lie, one point for each. Empty if none of the patterns fits the reading, or if several
// patterns with different points do.
PATTERN_READER_API std::optional<std::vector<cv::Point3d>> objectPoints(const PatternReading &reading,
                                                                        const std::vector<PrintedPattern> &patterns);

// The same, but computed from the grid spacing (twice the square's side) in millimetres instead of a file. If a plate's
// block contains an offset, it is added.
PATTERN_READER_API std::vector<cv::Point3d> objectPoints(const PatternReading &reading, double gridSpacing);

}  // namespace pattern_reader
