// Finds calibration patterns in a photograph. For each pattern, returns which one it is, where its corners lie in
// the photograph, and the values in its information block. Nothing is calibrated here. The information block contains
// lengths in millimetres, but the corners have only lattice coordinates; printed_pattern.h converts these to
// millimetres.
//
// Images have 1, 3 (BGR) or 4 (BGRA) channels of any depth and at most maximumPixels pixels. They are converted to grey
//   as image_file.h says. Coded patterns of any size are found. Plain checkerboards are found only if they have the
//   size that the options name.
// In image coordinates, the centre of the top-left pixel is (0, 0), x points to the right, and y points down. Lattice
//   coordinates are in lattice steps (half a grid spacing) in the pattern's own coordinate system, also with x to the
//   right and y down. In a tile and in the coded plane, (x, y) is the top-left corner of the square in column x, row y.
//   In a plate, (0, 0) is the frame's top-left outer corner, and the coordinates of the marks are the even numbers from
//   2 to 14. In a plain board, the inner corners run from (1, 1) to (columns, rows).
// Uncertain results are left out: a pattern of which too little is visible gives no reading, and the values of an
//   information block are absent if the block cannot be read beyond doubt.
// Every function may be called from any thread at the same time. readPatterns throws std::invalid_argument if the image
//   is empty, too large or of another kind, or if the board in the options has fewer than 3 x 3 inner corners.
#pragma once

#include <cstdint>
#include <functional>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "pattern_reader/pattern_reader_export.h"

namespace pattern_reader {

constexpr long maximumPixels = 150L * 1000 * 1000;

enum class PatternKind {
    Plane,  // a Flexible pattern: a part of one large coded plane
    Tile,   // an Official or Custom pattern, or one of an assembly
    Plate,  // a plate with 7 × 7 round marks
    Board,  // a plain checkerboard of the size given in the options
};

struct PatternCorner {
    cv::Point2f image;
    cv::Point lattice;
    // Estimated standard deviation of `image` along one axis (the root mean square of both axes), in pixels.
    float sigma = 0;
    // True if the picture around the point does not look like a corner or a mark, for example because the edge of a
    // shadow runs through it. `sigma` is then only a rough estimate.
    bool disturbed = false;
};

// The values in an information block. Lengths are in millimetres. A value is empty if the block does not contain it.
struct PatternValues {
    std::optional<double> gridSpacing;
    std::optional<double> thickness;
    std::optional<cv::Point> offset;  // of a plate, in whole grid spacings
    std::optional<int> assemblyPattern;
    int version = 0;
};

struct PatternReading {
    PatternKind kind = PatternKind::Plane;
    // The tile's number: 0 for an Official or Custom pattern, n + 1 for pattern n of an assembly; -1 for other kinds.
    int tile = -1;
    // The corners or mark centres that were seen, sorted by lattice row, then by column.
    std::vector<PatternCorner> corners;
    // The number of quarter turns clockwise, from 0 to 3, that is closest to `angle`.
    int quarterTurns = 0;
    // Direction of the pattern's x axis in the image, in degrees clockwise from the image's x axis.
    double angle = 0;
    // The number of orientations in which a plain board of this size and these colours looks the same: 1, 2 (half
    // turns) or 4 (quarter turns). The reading has the orientation whose x axis points most to the right in the image.
    // For coded patterns, this is 1.
    int orientations = 1;
    // True if the squares whose column and row have an even sum are dark. For a tile, this is its polarity.
    bool evenSquaresDark = true;
    // True if the square to the top left of the corners that were seen is dark. If a Flexible pattern is completely
    // visible, this is its polarity.
    bool topLeftSquareDark = true;
    // The values in the information block, and its eight bytes. Both are empty if the block was not read beyond doubt.
    std::optional<PatternValues> values;
    std::vector<std::uint8_t> blockBytes;
    int correctedBits = 0;     // bits of the block that were seen wrongly
    int filledBits = 0;        // bits of the block that could not be seen
    int squaresCompared = 0;   // squares compared with the position code; for a plate, samples of its frame
    int squaresDiffering = 0;  // the number of these that differ
    // 1 minus the probability that the reading is due to chance. For a plain board, the share of its corners that were
    // seen.
    double confidence = 0;
    double log10Chance = 0;  // log10 of the probability that the reading is due to chance; 0 for a plain board
};

struct ReadingOptions {
    // Reads plain checkerboards of this size as well: columns and rows of inner corners, 3 x 3 at least.
    std::optional<cv::Size> board;
    // Reads only this part of the image; all of it if empty. Coordinates stay those of the image.
    cv::Rect region;
    // Leaves out readings with a lower confidence.
    double leastConfidence = 0;
    // Called now and then by the thread that reads. Once it returns true, reading ends early and without a result.
    std::function<bool()> isCancelled;
};

// Returns all patterns in the image, the one with the most corners first. The result is empty if reading was cancelled.
PATTERN_READER_API std::vector<PatternReading> readPatterns(const cv::Mat &image, const ReadingOptions &options = {});

}  // namespace pattern_reader
