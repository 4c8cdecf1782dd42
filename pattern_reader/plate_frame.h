// Examines a plate's frame and its corners, one of which has the triangle.
#pragma once

#include "pattern_reader/plate_view.h"

namespace pattern_reader {

// Samples along the frame's four sides: how many were inside the picture, and how many showed the frame.
struct FrameEvidence {
    int passed = 0;
    int looked = 0;
    int goodSides = 0;
};

FrameEvidence lookForFrame(const PlateView &view);

// True if there are more marks where the frame should be.
bool isPartOfLargerGrid(const PlateView &view);

enum class CornerLook { Hidden, Plain, Triangle };

// Corner 0 is the top-left one, then clockwise.
CornerLook lookAtCorner(const PlateView &view, int corner);

}  // namespace pattern_reader
