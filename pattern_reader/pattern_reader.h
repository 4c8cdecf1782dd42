// Reads calibration patterns in a photograph: which pattern it is, where in it every corner lies, what its information
// block says. It does not calibrate, and it knows no millimetres except those in the block; printed_pattern.h does.
//
// Images: 1, 3 (BGR) or 4 (BGRA) channels of any depth, converted as image_file.h says, at most maximumPixels. Coded
//   patterns of any size are found; plain checkerboards only of the size that the options name.
// Coordinates: image coordinates have the centre of the top-left pixel at (0, 0), x to the right, y down. Lattice
//   coordinates count lattice steps (half a grid spacing) in the pattern's own frame, x to the right, y down: in a
//   tile and in the plane (x, y) is the top-left corner of the square in column x, row y; in a plate (0, 0) is the
//   outer corner of the frame, the marks lie on the even numbers from 2 to 14. In a plain board the inner corners run
//   from (1, 1) to (columns, rows).
// What is not sure is not reported: a checkerboard with too little of it in sight gives no reading; a block that cannot
//   be read beyond doubt is absent.
// Threads: every function may be called from any thread at the same time. Errors: readPatterns throws
//   std::invalid_argument for an image of another kind and for a board of less than 3 x 3 corners.
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
    Plane,  // a piece of the plane, from a Flexible pattern
    Tile,   // the Official and Single pattern, or one of an assembly
    Plate,  // a plate with 7 × 7 round marks
    Board,  // a plain checkerboard of the size asked for
};

struct PatternCorner {
    cv::Point2f image;
    cv::Point lattice;
    // Standard deviation of `image` in pixels, the root mean square of both axes, as the measurement estimates it.
    float sigma = 0;
    // The picture around the point does not look like a corner or a mark, for example because the edge of a shadow
    // runs through it. `sigma` is then only a rough estimate.
    bool disturbed = false;
};

// What an information block says. Lengths in millimetres.
struct PatternValues {
    std::optional<double> gridSpacing;
    std::optional<double> thickness;
    std::optional<cv::Point> offset;  // of a plate, in whole grid spacings
    std::optional<int> assemblyPattern;
    int version = 0;
};

struct PatternReading {
    PatternKind kind = PatternKind::Plane;
    // The tile's number: 0 for the Official and Single pattern, n + 1 for pattern n of an assembly; -1 otherwise.
    int tile = -1;
    // The corners or mark centres seen, by lattice row and column.
    std::vector<PatternCorner> corners;
    // How many quarter turns clockwise, to the nearest, the pattern's x axis is turned from the image's.
    int quarterTurns = 0;
    // Direction of the pattern's x axis in the image at its middle, degrees clockwise from the image's x axis.
    double angle = 0;
    // How many orientations a plain board's size and colours leave open: 1, 2 (half a turn) or 4 (a quarter turn).
    // The reading has the one whose x axis points most to the right in the image. 1 for coded patterns.
    int orientations = 1;
    // Whether the squares with an even sum of column and row are dark. In a tile this is its polarity: the top-left
    // square is dark. A piece of the plane has its polarity from its own top-left square.
    bool evenSquaresDark = true;
    bool topLeftSquareDark = true;
    // The information block's eight bytes and what they say, when it was read beyond doubt.
    std::optional<PatternValues> values;
    std::vector<std::uint8_t> blockBytes;
    int correctedBits = 0;    // bits of the block that were seen wrongly
    int filledBits = 0;       // bits of the block that could not be seen
    int squaresCompared = 0;  // position squares read, and how many of them differ from the code
    int squaresDiffering = 0;
    // 1 minus the probability that chance made the reading agree with the code as well as it does; of a plain board the
    // share of its corners that were seen.
    double confidence = 0;
    double log10Chance = 0;
};

struct ReadingOptions {
    // Reads plain checkerboards of this size as well: columns and rows of inner corners, 3 x 3 at least.
    std::optional<cv::Size> board;
    // Reads only this part of the image; all of it if empty. Coordinates stay those of the image.
    cv::Rect region;
    // Leaves out readings with less confidence.
    double leastConfidence = 0;
    // Asked now and then by the thread that reads; once it returns true, reading ends early and without a result.
    std::function<bool()> isCancelled;
};

// All patterns in the image, the largest first; none if cancelled.
PATTERN_READER_API std::vector<PatternReading> readPatterns(const cv::Mat &image, const ReadingOptions &options = {});

}  // namespace pattern_reader
