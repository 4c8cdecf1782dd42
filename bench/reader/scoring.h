// Holds what the reader says of a picture against what the camera knows of it.
#pragma once

#include <vector>

#include "bench/reader/scene.h"
#include "pattern_reader/pattern_reader.h"

namespace reader_bench {

struct PointError {
    cv::Point2f error;       // measured minus true, pixels
    float least = 0;         // root mean square distance that the noise allows; 0 if it cannot be told
    float sigma = 0;         // what the reading says of its own error along one axis; 0 if nothing
    bool disturbed = false;  // and whether it says that something is wrong there
};

struct PatternScore {
    const ScenePattern *pattern = nullptr;
    int seenPoints = 0;       // corners or marks that the picture shows
    int seenSquares = 0;      // squares, or marks
    bool placed = false;      // read with the right place and orientation
    bool valuesRead = false;  // and its values are right
    int corners = 0;          // reported of it
    int strayCorners = 0;     // of these, farther from the truth than a quarter of a square, measured on the pattern
    std::vector<PointError> errors;  // of the others
    int moreReadings = 0;            // that say the same of it again
    bool polarityRight = true;
    int correctedBits = 0;
};

struct PictureScore {
    std::vector<PatternScore> patterns;
    int falsePlaces = 0;
    int falseValues = 0;
};

// The scene must outlive the score.
PictureScore scorePicture(const Scene &scene, const std::vector<pattern_reader::PatternReading> &readings);

// Root mean square of the errors' lengths, pixels.
double rmsOf(const std::vector<PointError> &errors);

}  // namespace reader_bench
