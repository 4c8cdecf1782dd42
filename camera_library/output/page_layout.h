// Lays out a printed page: chooses the paper and places the pattern, its two check bars and its caption. Pure
// values in millimetres; the origin is the top-left corner of the area, x runs to the right and y down. Nothing is
// drawn here.
#pragma once

#include <array>
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
    Point label;  // start of the label's baseline, which runs to the right (bar along x) or up (bar along y)

    static constexpr double depth = 3.0;
};

// A width and a height.
struct PageSize {
    double width = 0.0;
    double height = 0.0;
};

struct PageLayout {
    PageSize paper;
    PageSize area;  // what is laid out, as the finished print measures; within it are the places below
    Point block;    // top-left corner of the pattern with its quiet zone, or of the part of it that is on the page
    Point pattern;  // top-left corner of the outer size; the pattern is centred on the page
    CheckBar barAlongX;
    CheckBar barAlongY;
    Point caption;              // middle of the caption's baseline
    double captionWidth = 0.0;  // the greatest width of the caption
};

// The smallest page of A4 to A0, portrait before landscape, that holds the pattern with its quiet zone, the check bars
// and a caption line around it, and margins of 5 mm. Larger patterns get a page of a custom size. Empty if that would
// exceed the largest page of a PDF, 5080 mm.
//
// A printer makes everything longer by `printScale`. If that is less than 1, the area is that much smaller than the
// paper, so that what is drawn divided by it stays on the paper; otherwise it is the paper.
std::optional<PageLayout> layOutPage(const PatternGeometry &geometry, std::array<double, 2> printScale = {1.0, 1.0});

// The same on this paper; empty if the pattern does not fit on it.
std::optional<PageLayout> layOutOnPaper(PageSize paper, const PatternGeometry &geometry,
                                        std::array<double, 2> printScale);

// The same for a part of a pattern of this size, whose place in the pattern only the caller knows: the place of the
// pattern is left at 0.
std::optional<PageLayout> layOutOnPaper(PageSize paper, PageSize block, std::array<double, 2> printScale);

// The largest block for which this paper has room, with check bars beside it.
PageSize largestBlock(PageSize paper, std::array<double, 2> printScale);

// The longest side that a page may have, 14400 pt.
constexpr double largestPageSide = 5080.0;

// Bar and ticks: overlapping rectangles of one orientation, to be filled together by the non-zero rule.
std::vector<Rectangle> checkBarShapes(const CheckBar &bar);

// The same as one outline, for formats that draw outlines or fill by the even-odd rule.
Polygon checkBarOutline(const CheckBar &bar);

}  // namespace lmlib64
