// Where everything stands on a printed page: which page is taken, and where the pattern, its two check bars and
// its caption lie on it. Pure values in millimetres; the origin is the page's top-left corner, x runs to the
// right and y down. What is drawn there is not known here.
#pragma once

#include <optional>
#include <vector>

#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// A ruler of exactly `length`, from `start` to the right (along x) or down (along y). Its ticks reach
// `depth` down or to the right of `start`.
struct CheckBar {
    Point start;
    double length = 0.0;
    bool isAlongY = false;
    Point label;  // start of the label's base line, which runs to the right (along x) or up (along y)

    static constexpr double depth = 3.0;
};

struct PageLayout {
    double width = 0.0;
    double height = 0.0;
    Point pattern;  // top-left corner of the outer size; the pattern is centred on the page
    CheckBar barAlongX;
    CheckBar barAlongY;
    Point caption;              // middle of the caption's base line
    double captionWidth = 0.0;  // what the caption may take
};

// The smallest of A4 to A0, upright before lying, that holds the pattern with its quiet zone, a caption line
// and check bars outside of that, and margins of 5 mm; for larger patterns a page made to measure. Nothing where
// that would exceed the largest page a PDF can have, 5080 mm.
std::optional<PageLayout> layOutPage(const PatternGeometry &geometry);

// The greatest side of a page, 14400 pt.
constexpr double largestPageSide = 5080.0;

// Bar and ticks: rectangles of one orientation that overlap; fill them as one path by the non-zero rule.
std::vector<Rectangle> checkBarShapes(const CheckBar &bar);

}  // namespace lmlib64
