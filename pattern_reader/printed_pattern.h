// Loads the descriptions of printed patterns, and converts the corners of a reading to millimetres.
//
// A file is either the JSON that the camera library writes or a PDF that has this JSON as an attachment. Nothing is
// drawn or measured here, and the real size of a print is not known.
//
// Coordinates are in millimetres in the coordinate system of the pattern's file, with x to the right, y down and z = 0.
// Without a file, the origin is that of a pattern without an offset: the middle corner of a tile, the middle mark of a
// plate, the lattice point (136, 136) of the plane, or the first inner corner of a plain board. Every function may be
// called from any thread at the same time.
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
    int latticeStep = 1;   // by how much the lattice coordinates of neighbouring points differ
    cv::Size size;         // columns and rows of points
    double gridSpacing = 0;
    std::vector<cv::Point2d> points;  // row after row
};

// Loads the patterns of a file. If the file cannot be used, throws std::runtime_error with a sentence that names the
// file. It cannot be used if it is not readable, if it is neither a pattern's JSON nor a PDF with this JSON, or if the
// reader does not know the kind of a pattern in it.
PATTERN_READER_API std::vector<PrintedPattern> loadPrintedPatterns(const std::string &path);

// Returns one point for each corner of the reading. Empty if none of the patterns fits the reading, or if several
// patterns fit it and their points differ. A pattern fits if it has the reading's kind, tile number and corners, and if
// the reading's information block, if it was read, does not contradict it.
PATTERN_READER_API std::optional<std::vector<cv::Point3d>> objectPoints(const PatternReading &reading,
                                                                        const std::vector<PrintedPattern> &patterns);

// Computes the points from the grid spacing in millimetres: twice the side of a square, or the distance between
// neighbouring marks of a plate. If a plate's block contains an offset, it is added to the points.
PATTERN_READER_API std::vector<cv::Point3d> objectPoints(const PatternReading &reading, double gridSpacing);

}  // namespace pattern_reader
