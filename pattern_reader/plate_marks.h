// The marks of one plate: completes what the search for lattices has found, and gives their centres.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/image_level.h"
#include "pattern_reader/mark_lattice.h"
#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/place_finder.h"

namespace pattern_reader {

// Looks for the marks that are missing and leaves out what is none, and maps cells to the image. False when the rest
// cannot be one plate's marks.
bool completeMarks(const std::vector<ImageLevel> &levels, MarkLattice &found, cv::Matx33d &imageFromCell);

// Writes the pictures of the marks' centres into the reading, by lattice row and column.
void addMarks(const std::vector<ImageLevel> &levels, const MarkLattice &found, const cv::Matx33d &imageFromCell,
              const LatticeMotion &motion, PatternReading &reading);

}  // namespace pattern_reader
