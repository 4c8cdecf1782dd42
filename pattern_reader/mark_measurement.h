// Measures the marks of a plate. Each mark is fitted to the grey levels of the full picture. If it is blurred there, it
// is fitted to those of a coarser pyramid level, in which its blur is one or two pixels. Then the marks are compared
// with their neighbours, and those that disagree are left out.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/image_level.h"
#include "pattern_reader/mark_lattice.h"

namespace pattern_reader {

struct MeasuredMark {
    cv::Point cell;
    cv::Point2d centre;      // where the mark's centre is seen, which is not the centre of the ellipse
    double sigma = 0;        // standard deviation along one axis, pixels
    bool disturbed = false;  // looks worse than the other marks, as in PatternCorner
};

// `radius` is the drawn radius of the marks, in cells. The result is empty if too few marks can be measured.
std::vector<MeasuredMark> measureMarks(const std::vector<ImageLevel> &levels, const MarkLattice &found, double radius);

}  // namespace pattern_reader
