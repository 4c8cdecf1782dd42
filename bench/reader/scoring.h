// Compares what the reader reports about a picture with the truth.
#pragma once

#include <vector>

#include "bench/reader/scene.h"
#include "pattern_reader/pattern_reader.h"

namespace reader_bench {

struct PointError {
    cv::Point2f error;       // measured minus true, pixels
    float least = 0;         // least rms error that the noise allows (noise_bound.h); 0 if it is not known
    float sigma = 0;         // the reader's own estimate of the error along one axis; 0 if there is none
    bool disturbed = false;  // the reading reports that the corner is disturbed
};

struct PatternScore {
    const ScenePattern *pattern = nullptr;
    int seenPoints = 0;       // corners or marks that the picture shows
    int seenSquares = 0;      // squares of which the picture shows all corners; for a plate, equal to seenPoints
    bool placed = false;      // there is a reading of this pattern, in the right place and orientation
    bool valuesRead = false;  // a reading of this pattern has the same values as the pattern's information block
    int corners = 0;          // number of corners in the first reading
    // Number of corners, in all readings of the pattern, with an error of more than a quarter of a square. The error is
    // converted to the pattern's plane.
    int strayCorners = 0;
    std::vector<PointError> errors;  // of the first reading's corners that are not stray
    int moreReadings = 0;            // further readings of the same pattern
    bool polarityRight = true;
    int correctedBits = 0;
};

struct PictureScore {
    std::vector<PatternScore> patterns;
    int falsePlaces = 0;  // readings that match no pattern in the picture; all readings if the picture is mirrored
    // Number of readings with wrong values. If a reading matches no pattern, any values that it has are wrong.
    int falseValues = 0;
};

// The scene must outlive the score.
PictureScore scorePicture(const Scene &scene, const std::vector<pattern_reader::PatternReading> &readings);

// Root mean square of the errors' lengths, pixels.
double rmsOf(const std::vector<PointError> &errors);

}  // namespace reader_bench
