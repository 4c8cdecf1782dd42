#include "pattern_reader/plate_frame.h"

#include <algorithm>

namespace pattern_reader {

namespace {

// Side 0 is the top, then clockwise; along runs from 0 to 8, inward from the outer edge.
cv::Point2d onSide(int side, double along, double inward) {
    switch (side) {
        case 0:
            return {along, inward};
        case 1:
            return {8 - inward, along};
        case 2:
            return {8 - along, 8 - inward};
        default:
            return {inward, 8 - along};
    }
}

}  // namespace

FrameEvidence lookForFrame(const PlateView &view) {
    FrameEvidence evidence;
    for (int side = 0; side < 4; side++) {
        int passed = 0;
        int looked = 0;
        for (int i = 0; i < 12; i++) {
            // Not at the marks, whose rows could be taken for a frame, and not at the dots, which are at the halves.
            const int gap = i / 2;
            const double along = 1.35 + gap + (i % 2) * 0.3;
            double outside = 1;
            double frame = 0;
            double inside = 0;
            if (!view.lightAt(onSide(side, along, frameMiddle), frame) ||
                !view.lightAt(onSide(side, along, 0.37), inside)) {
                continue;
            }
            view.lightAt(onSide(side, along, -0.2), outside);
            looked++;
            passed += std::min(outside, inside) - frame > 0.25 && inside > 0.5 ? 1 : 0;
        }
        evidence.passed += passed;
        evidence.looked += looked;
        evidence.goodSides += looked >= 4 && passed * 10 >= looked * 6 ? 1 : 0;
    }
    return evidence;
}

CornerLook lookAtCorner(const PlateView &view, int corner) {
    const auto at = [&](double x, double y) {
        double light = 0.5;
        // Along the side that starts in this corner and inward from it.
        return view.lightAt(onSide(corner, x, y), light) ? light : 0.5;
    };
    const bool light = at(1.1, 0.42) > 0.6 && at(0.42, 1.1) > 0.6 && at(-0.25, 0.5) > 0.6 && at(0.5, -0.25) > 0.6;
    const bool dark = at(frameMiddle, 0.6) < 0.5 && at(0.6, frameMiddle) < 0.5 && at(frameMiddle, frameMiddle) < 0.5;
    if (!light || !dark) {
        return CornerLook::Hidden;
    }
    const double inside = at(0.37, 0.37);
    return inside < 0.35 ? CornerLook::Triangle : inside > 0.65 ? CornerLook::Plain : CornerLook::Hidden;
}

}  // namespace pattern_reader
