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

// True if the goal requires that the pattern is read. This is so if its squares have at least 6 pixels, its tilt is at
// most 60°, at least 60 of its squares or 12 of its marks are visible, and the picture is not mirrored.
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
    double rms = 0;            // of the corners found in their right places, pixels
    double medianRms = 0;      // of the root mean squares of the single patterns, pixels
    double percentile95 = 0;   // of the errors' lengths, pixels
    double bias = 0;           // root mean square of the lengths of the patterns' mean errors, pixels
    double ratioToLeast = 0;   // the patterns' median of: rms divided by the least that noise allows; 0 if not known
    double sigmaVariance = 0;  // variance of: error divided by the sigma that the reader states; 0 if not known
};

// Sums up the patterns that `pick` selects. False places and false values are those of all pictures with a selected
// pattern.
using Pick = std::function<bool(const PictureResult &picture, const PatternResult &pattern)>;
Row rowOf(const std::vector<PictureResult> &results, const Pick &pick);

void printConditionTables(const std::vector<PictureResult> &results);

}  // namespace reader_bench
