// Reads which squares of a lattice carry a mark. A mark is a smaller square of the opposite colour in the centre, with
// sides a third as long.
//
// The grey levels and the blur measured at a square's corners predict how its centre looks with and without a mark. The
// centre is compared with both predictions, so even small and blurred squares can be read.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "pattern_reader/corner_fit.h"
#include "pattern_reader/corner_lattice.h"

namespace pattern_reader {

struct SquareReading {
    cv::Point cell;  // of the square's top-left corner
    bool marked = false;
    float certainty = 0;  // 0: no better than a guess, 1: looks exactly as predicted for `marked`
    int measuredCorners = 0;
    // True if the square is at the edge of the measured area and may in fact be a cover: an object in front of the
    // pattern that is as light or as dark as the square.
    bool maybeCover = false;
};

// Returns every square that has at least one measured corner and looks like a square. fits[i] is the fit of
// lattice.corners[i].
std::vector<SquareReading> readMarks(const cv::Mat &picture, const CornerLattice &lattice,
                                     const std::vector<CornerFit> &fits);

}  // namespace pattern_reader
