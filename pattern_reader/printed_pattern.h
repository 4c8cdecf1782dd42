// Loads the descriptions of printed patterns, and converts the corners of a reading to millimetres.
//
// A file is either the JSON that the camera library writes or a PDF that has this JSON as an attachment. Nothing is
// drawn or measured here, and the real size of a print is not known.
//
// Coordinates are in millimetres, with x to the right, y down and z = 0. If there is a pattern file, they are in its
// coordinate system. objectPoints() with a grid spacing needs no file. The origin of its points depends on the pattern:
// - Tile: the middle corner.
// - Plane: the lattice point (136, 136).
// - Plain board: the first inner corner.
// - Plate: the middle mark if no offset was read. Otherwise, the middle mark is at the offset in the information block.
//
// Every function may be called from any thread at the same time.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

struct PrintedPattern {
    PatternKind kind = PatternKind::Board;
    int tile = -1;                    // as in PatternReading
    cv::Point firstPoint;             // lattice coordinates of the first point
    int latticeStep = 1;              // by how much the lattice coordinates of neighbouring points differ
    cv::Size size;                    // columns and rows of points
    double gridSpacing = 0;           // mm
    std::vector<cv::Point2d> points;  // mm, row after row
};

// Loads the patterns of a file. Throws std::runtime_error if the file cannot be opened, if it is neither a pattern's
// JSON nor a PDF with this JSON, if something in it is missing or does not fit together, or if its version or the kind
// of a pattern in it is not known. The text of the exception is a sentence that names the file.
PATTERN_READER_API std::vector<PrintedPattern> loadPrintedPatterns(const std::string &path);

// Returns one point for each corner of the reading. Empty if none of the patterns fits the reading, or if several
// patterns fit it and their points differ. A pattern fits if it has the kind and the tile number of the reading and
// contains all of the reading's corners. An information block contains either a grid spacing or an offset. If the block
// was read, the pattern must also have this grid spacing or offset.
PATTERN_READER_API std::optional<std::vector<cv::Point3d>> objectPoints(const PatternReading &reading,
                                                                        const std::vector<PrintedPattern> &patterns);

// Computes the points without a pattern file. The grid spacing is in millimetres; it is twice the side of a square, or
// the distance between neighbouring marks of a plate.
PATTERN_READER_API std::vector<cv::Point3d> objectPoints(const PatternReading &reading, double gridSpacing);

}  // namespace pattern_reader
