#include "pattern_reader/plate_frame.h"

#include <algorithm>

namespace pattern_reader {

namespace {

// Returns the plate coordinates (plate_view.h) of a point near a side. Side 0 is the top; the others follow clockwise.
// A side runs clockwise from one corner to the next and is 8 grid spacings long. `along` is the distance along the side
// from the first of these corners. `inward` is the distance from the outer edge. Both are in grid spacings.
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

// True if the picture shows marks, with paper between them, along a side's outer edge. The grid of marks then continues
// where a plate has its frame.
bool showsMarks(const PlateView &view, int side) {
    int marks = 0;
    for (int i = 1; i <= marksPerSide; i++) {
        double mark = 1;
        double before = 0;
        double behind = 0;
        marks += view.lightAt(onSide(side, i, 0), mark) && view.lightAt(onSide(side, i - 0.5, 0), before) &&
                         view.lightAt(onSide(side, i + 0.5, 0), behind) && mark < 0.35 &&
                         std::min(before, behind) > 0.65
                     ? 1
                     : 0;
    }
    return marks >= 2;
}

}  // namespace

bool isPartOfLargerGrid(const PlateView &view) {
    return showsMarks(view, 0) || showsMarks(view, 1) || showsMarks(view, 2) || showsMarks(view, 3);
}

FrameEvidence lookForFrame(const PlateView &view) {
    FrameEvidence evidence;
    for (int side = 0; side < 4; side++) {
        int passed = 0;
        int looked = 0;
        for (int i = 0; i < 12; i++) {
            // The samples avoid the marks, because a row of marks could be taken for a frame. They also avoid the code
            // dots, which are half way between the marks.
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
    // Returns the light at a point. `x` is the distance from this corner along the side that runs clockwise from here,
    // and `y` is the distance inward from that side. Returns `otherwise` if the light cannot be determined, for example
    // outside the picture.
    const auto at = [&](double x, double y, double otherwise) {
        double light = 0;
        return view.lightAt(onSide(corner, x, y), light) ? light : otherwise;
    };
    const auto isLight = [&](double x, double y) { return at(x, y, 1) > 0.6; };
    const auto isDark = [&](double x, double y) { return at(x, y, 0) < 0.5; };
    // A place outside the picture passes either test, because the frame's outer edge may be outside the picture.
    const bool light = isLight(1.1, 0.42) && isLight(0.42, 1.1) && isLight(-0.25, 0.5) && isLight(0.5, -0.25);
    const bool dark = isDark(frameMiddle, 0.6) && isDark(0.6, frameMiddle) && isDark(frameMiddle, frameMiddle);
    if (!light || !dark) {
        return CornerLook::Hidden;
    }
    // At (0.5, 0.5), a triangle differs most clearly from the corner of a blurred or wider frame.
    const double inside = at(0.37, 0.37, 0.5);
    const double deep = at(0.5, 0.5, 0.5);
    return inside < 0.35 && deep < 0.4 ? CornerLook::Triangle : inside > 0.65 ? CornerLook::Plain : CornerLook::Hidden;
}

}  // namespace pattern_reader
