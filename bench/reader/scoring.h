// Holds what the reader says of a picture against what the camera knows of it.
#pragma once

#include <vector>

#include "bench/reader/scenes.h"
#include "pattern_reader/pattern_reader.h"

namespace reader_bench {

struct PatternScore {
    const ScenePattern *pattern = nullptr;
    bool placed = false;      // read with the right place and orientation
    bool valuesRead = false;  // and its values are right
    int corners = 0;          // reported of it
    int strayCorners = 0;     // of these, farther than a third of a square from the truth
    double squaredError = 0;  // of the others, pixels²
    bool polarityRight = true;
    int correctedBits = 0;
};

struct PictureScore {
    std::vector<PatternScore> patterns;
    int falsePlaces = 0;
    int falseValues = 0;
};

PictureScore scorePicture(const Scene &scene, const std::vector<pattern_reader::PatternReading> &readings);

}  // namespace reader_bench
