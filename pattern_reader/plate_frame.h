// Examines a plate's frame and its corners, one of which has the triangle.
#pragma once

#include "pattern_reader/plate_view.h"

namespace pattern_reader {

// Says how many samples of the picture show the frame. The samples lie along the frame's four sides.
struct FrameEvidence {
    int passed = 0;     // samples that show the dark frame between lighter paper
    int looked = 0;     // all samples inside the picture
    int goodSides = 0;  // sides with at least 4 samples in the picture, at least 60 % of which show the frame
};

FrameEvidence lookForFrame(const PlateView &view);

// True if the grid of marks continues where the frame should be.
bool isPartOfLargerGrid(const PlateView &view);

// Hidden means that the picture does not show whether the corner has the triangle.
enum class CornerLook { Hidden, Plain, Triangle };

// Corner 0 is the top-left one; the others follow clockwise.
CornerLook lookAtCorner(const PlateView &view, int corner);

}  // namespace pattern_reader
