// Lays out a printed page: chooses the paper and places the pattern, its two check bars and its caption. All lengths
// are in millimetres. The origin is the top-left corner of PageLayout::area, x runs to the right and y down. Nothing is
// drawn here.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// A ruler of exactly `length`. It runs from `start` to the right (along x) with ticks that point down, or from `start`
// down (along y) with ticks that point to the right. The longest ticks have the length `depth`.
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
    PageSize area;  // size of the part of the paper that is laid out, as measured on the finished print
    Point block;    // top-left corner of what the page shows: the pattern with its quiet zone, or a part of them
    Point pattern;  // top-left corner of the pattern without its quiet zone; the pattern is centred on the page
    CheckBar barAlongX;
    CheckBar barAlongY;
    Point caption;              // middle of the caption's baseline
    double captionWidth = 0.0;  // the greatest width that the caption may have
};

// Lays out the smallest page from A4 to A0 that holds the pattern with its quiet zone, the check bars, a caption line
// and margins of 5 mm. Portrait is tried before landscape. A pattern that fits on none of these pages gets a page of a
// custom size. The result is empty if a side of that page would exceed largestPageSide.
//
// The printer multiplies all lengths by `printScale`, so drawing divides them by `printScale`. If the scale of an axis
// is less than 1, drawing makes everything longer along this axis. The drawn area must still fit on the paper, so
// PageLayout::area is shorter than the paper: its length along this axis is the paper's length times the scale. Along
// any other axis, the area is as long as the paper.
std::optional<PageLayout> layOutPage(const PatternGeometry &geometry, std::array<double, 2> printScale = {1.0, 1.0});

// Lays out a page on this paper; empty if the pattern does not fit on it.
std::optional<PageLayout> layOutOnPaper(PageSize paper, const PatternGeometry &geometry,
                                        std::array<double, 2> printScale);

// Lays out a page for a part of a pattern; `block` is the size of the part. PageLayout::pattern stays 0, because the
// place of the part within the pattern is not known here.
std::optional<PageLayout> layOutOnPaper(PageSize paper, PageSize block, std::array<double, 2> printScale);

// Returns the largest block that fits on this paper with the check bars beside it and the caption below it.
PageSize largestBlock(PageSize paper, std::array<double, 2> printScale);

// The longest side that a page of a PDF may have: 14400 pt.
constexpr double largestPageSide = 5080.0;

// Returns the bar and its ticks as rectangles, which overlap. Fill all of them together by the non-zero rule.
std::vector<Rectangle> checkBarShapes(const CheckBar &bar);

// Returns the bar and its ticks as one outline, for formats that draw outlines or fill by the even-odd rule.
Polygon checkBarOutline(const CheckBar &bar);

}  // namespace lmlib64
