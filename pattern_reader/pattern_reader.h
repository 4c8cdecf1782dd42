// Reads coded calibration patterns in a photograph: which pattern it is, where in it every corner lies, what its
// information block says. It does not calibrate, and it knows no millimetres but those the block holds.
//
// Images: 8 bits, one channel, at most maximumPixels. No size of pattern or square is asked for.
// Coordinates: image coordinates have the centre of the top-left pixel at (0, 0), x to the right, y down. Lattice
//   coordinates count lattice steps (half a grid spacing) in the pattern's own frame, x to the right, y down: in a
//   tile and in the plane (x, y) is the top-left corner of the square in column x, row y; in a plate (0, 0) is the
//   outer corner of the frame, the marks lie on the even numbers from 2 to 14.
// What is not sure is not reported: a plain checkerboard, or one with too little of it in sight, gives no reading; a
//   block that cannot be read beyond doubt is absent.
// Threads: every function may be called from any thread at the same time. Errors: readPatterns throws
//   std::invalid_argument for an image of another kind.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

namespace pattern_reader {

constexpr long maximumPixels = 150L * 1000 * 1000;

enum class PatternKind {
    Plane,  // a piece of the plane, from a Flexible pattern
    Tile,   // the Official and Single pattern, or one of an assembly
    Plate,  // a plate with 7 × 7 round marks
};

struct PatternCorner {
    cv::Point2f image;
    cv::Point lattice;
    // Standard deviation of `image` along one axis, in pixels, as the measurement itself estimates it.
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
    // 1 minus the probability that chance made the reading agree with the code as well as it does.
    double confidence = 0;
    double log10Chance = 0;
};

// All patterns in the image, the largest first.
std::vector<PatternReading> readPatterns(const cv::Mat &image);

}  // namespace pattern_reader
