// Sums up the measurements, by condition and separately for boards and plates, and prints them as Markdown tables.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/reader/conditions.h"
#include "bench/reader/scoring.h"

namespace reader_bench {

// The result for a pattern. It is kept when the picture itself is no longer needed.
struct PatternResult {
    bool plate = false;
    double pixelsPerSquare = 0;
    double tiltDegrees = 0;
    bool asked = false;  // the pattern must be read, see isAsked
    bool whole = false;  // completely visible
    bool hasBlock = false;
    std::string text;  // description of the pattern for lists of failures
    PatternScore score;
};

struct PictureResult {
    unsigned number = 0;
    size_t condition = 0;
    std::vector<PatternResult> patterns;
    int falsePlaces = 0;  // readings that match no pattern in the picture
    int falseValues = 0;  // information blocks read with wrong values
    bool hasPlate = false;
    double renderSeconds = 0;
    double readSeconds = 0;
    double megapixels = 0;

    // One line for each thing that went wrong.
    std::vector<std::string> failures() const;
};

// True if the goal requires that the pattern is read. The squares must be at least 6 pixels wide, and the tilt at most
// 60°. At least 60 squares, or 12 marks of a plate, must be visible. The picture must not be mirrored.
bool isAsked(const Scene &scene, const PatternScore &score);

PictureResult resultOf(unsigned number, const Scene &scene,
                       const std::vector<pattern_reader::PatternReading> &readings);

struct Row {
    int patterns = 0;
    int read = 0;
    int asked = 0;  // patterns that must be read, see isAsked
    int askedAndRead = 0;
    int blocks = 0;  // patterns that must be read, have an information block and are completely visible
    int blocksRead = 0;
    long seenPoints = 0;
    long foundPoints = 0;
    int falsePlaces = 0;
    int falseValues = 0;
    int falseCorners = 0;
    int readAgain = 0;  // readings of patterns that had already been read
    int wrongPolarity = 0;
    // Errors in pixels, of the corners that were found in their right places.
    double rms = 0;
    double medianRms = 0;  // the median over the patterns of each pattern's rms
    double percentile95 = 0;
    double bias = 0;  // the rms over the patterns of the length of each pattern's mean error
    // Ratios; 0 if not known.
    double ratioToLeast = 0;   // the median over the patterns of (rms / least rms that noise allows)
    double sigmaVariance = 0;  // the variance of (error / standard deviation that the reader states)
};

// Sums up the patterns that `pick` selects. False places and false values are counted in every picture that has a
// selected pattern.
using Pick = std::function<bool(const PictureResult &picture, const PatternResult &pattern)>;
Row rowOf(const std::vector<PictureResult> &results, const Pick &pick);

void printConditionTables(const std::vector<PictureResult> &results);

}  // namespace reader_bench
