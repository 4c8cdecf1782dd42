// Finds round dark marks that stand in a square lattice, as on a plate: their pitch is four times their radius.
//
// A mark is measured by its border: an ellipse through the steepest points around it. Its shape tells how the plate is
// tilted there, so neighbours are looked for where they must be.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/corner_lattice.h"
#include "pattern_reader/image_level.h"
#include "pattern_reader/point_detector.h"

namespace pattern_reader {

struct RoundMark {
    cv::Point2f centre;    // image coordinates
    cv::Matx22f toUnit;    // maps the border, seen from the centre, onto the unit circle
    float area = 0;        // pixels²
    float darkLevel = 0;   // grey level in the middle
    float lightLevel = 0;  // grey level around
};

// Measures the mark around a point of the image; radius is a first guess to a factor of two. False when there is no
// closed round border.
bool measureMark(const ImageLevel &level, cv::Point2f image, float radius, RoundMark &mark);

// A piece of a lattice of round marks. Cells and axes are those of CornerLattice; `marks` belongs to its corners.
struct MarkLattice {
    CornerLattice lattice;
    std::vector<RoundMark> marks;
};

// Lattices of at least leastMarks marks among the blobs of one level, from large to small.
std::vector<MarkLattice> findMarkLattices(const std::vector<ImageLevel> &levels, size_t number,
                                          const std::vector<DarkBlob> &blobs, size_t leastMarks);

}  // namespace pattern_reader
