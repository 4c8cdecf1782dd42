// Measures the marks of a plate. A blurred ellipse is fitted to each mark in the full picture. If a mark is large and
// strongly blurred, the ellipse is fitted in a coarser level of the image pyramid, where the blur is about two pixels.
// Then the marks are compared with their neighbours, and those that disagree are left out.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/image_level.h"
#include "pattern_reader/mark_lattice.h"

namespace pattern_reader {

struct MeasuredMark {
    cv::Point cell;
    cv::Point2d centre;      // where the mark's centre is seen; not the same as the centre of the ellipse
    double sigma = 0;        // standard deviation along one axis, pixels
    bool disturbed = false;  // looks worse than the other marks; copied to PatternCorner::disturbed
};

// `radius` is the drawn radius of the marks, in cells. The result is empty if too few marks can be measured.
std::vector<MeasuredMark> measureMarks(const std::vector<ImageLevel> &levels, const MarkLattice &found, double radius);

}  // namespace pattern_reader
