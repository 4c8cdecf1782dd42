// The pages of a document, as every format with pages draws them: the pattern, the check bars with their labels, and
// the texts. Pure values in millimetres; the origin is the top-left corner of the paper, x runs to the right and y
// down.
#pragma once

#include <string>
#include <vector>

#include "camera_library/output/page_layout.h"
#include "camera_library/output/pattern_document.h"

namespace lmlib64 {

// A text in the captions' font. The baseline starts at `start` and runs to the right or up.
struct PageText {
    std::string text;  // UTF-8
    double size = 0.0;
    Point start;
    bool isUpwards = false;
};

// Where lengths of a drawing are on the paper.
struct Placement {
    double x(double mm) const { return origin.x + mm; }
    double y(double mm) const { return origin.y + mm; }
    Point at(const Point &point) const { return {x(point.x), y(point.y)}; }

    Point origin;
};

// Refers to the pattern, which must outlive it.
struct PrintedPage {
    const DrawnPattern *pattern = nullptr;
    double width = 0.0;  // of the paper
    double height = 0.0;
    Placement ofPattern;  // of the coordinates of its geometry
    std::vector<CheckBar> bars;
    std::vector<PageText> texts;  // all but the labels of the bars
};

// All pages, one per pattern. Throws PatternTooLarge, which names the first pattern that fits on no page.
std::vector<PrintedPage> printedPages(const PatternDocument &document);

// "100 mm"
PageText labelOf(const CheckBar &bar);

// The width of the text on the page.
double widthOf(const PageText &text);

}  // namespace lmlib64
