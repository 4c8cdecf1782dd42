// Sums up the measurements, by condition and separately for boards and plates, and prints them as Markdown tables.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/reader/conditions.h"
#include "bench/reader/scoring.h"

namespace reader_bench {

// How one pattern of a picture was read. The picture itself is not kept.
struct PatternResult {
    bool plate = false;
    double pixelsPerSquare = 0;
    double tiltDegrees = 0;
    bool asked = false;  // the reader is required to read the pattern, see isAsked
    bool whole = false;  // completely visible
    bool hasBlock = false;
    std::string text;  // description of the pattern, for failures()
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

    // Returns one line for each fault in the reading of this picture.
    std::vector<std::string> failures() const;
};

// True if the reader is required to read the pattern (reader_goals.h has the goals). This is so if the pattern has at
// least 6 pixels per square and a tilt of at most 60°, if at least 60 of its squares (12 marks of a plate) are visible,
// and if the picture is not mirrored.
bool isAsked(const Scene &scene, const PatternScore &score);

PictureResult resultOf(unsigned number, const Scene &scene,
                       const std::vector<pattern_reader::PatternReading> &readings);

struct Row {
    int patterns = 0;
    int read = 0;
    int asked = 0;  // patterns that the reader is required to read, see isAsked
    int askedAndRead = 0;
    int blocks = 0;  // required patterns that are completely visible and have an information block
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
    double medianRms = 0;  // each pattern has an rms; this is the median of these
    double percentile95 = 0;
    // Each pattern has a mean error, which is a vector; this is the rms of the lengths of these vectors.
    double bias = 0;
    // Each pattern's rms is divided by the least rms that the noise allows; this is the median of the quotients, or 0
    // if not known.
    double ratioToLeast = 0;
    // Each corner's error along one axis is divided by the standard deviation that the reader states for it; this is
    // the mean square of the quotients, or 0 if not known. Corners that the reader calls disturbed are left out.
    double sigmaVariance = 0;
};

// Sums up the patterns that `pick` selects. False places and false values belong to a picture and not to a pattern, so
// all those of a picture are counted if any of its patterns is selected.
using Pick = std::function<bool(const PictureResult &picture, const PatternResult &pattern)>;
Row rowOf(const std::vector<PictureResult> &results, const Pick &pick);

void printConditionTables(const std::vector<PictureResult> &results);

}  // namespace reader_bench
