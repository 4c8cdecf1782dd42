// Measures the marks of a plate: each is fitted to the grey levels of the picture itself, or of that halving in which
// its blur is a pixel or two, and held against its neighbours. What is not where or as they say is left out.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/image_level.h"
#include "pattern_reader/mark_lattice.h"

namespace pattern_reader {

struct MeasuredMark {
    cv::Point cell;
    cv::Point2d centre;  // picture of the mark's centre, not the centre of its picture; image coordinates
    double sigma = 0;    // standard deviation along one axis, pixels
    bool disturbed = false;
};

// radius: of the marks, in cells.
std::vector<MeasuredMark> measureMarks(const std::vector<ImageLevel> &levels, const MarkLattice &found, double radius);

}  // namespace pattern_reader
