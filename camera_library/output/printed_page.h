// A page of a document: the pattern, the check bars with their labels, the cut marks and the texts. Every format with
// pages draws the same page. All lengths are in millimetres; x runs to the right and y down from the top-left corner of
// the paper.
//
// A page is laid out in the size of the finished print. When the page is drawn, all lengths are divided by the
// document's print scale, because the printer multiplies them by that scale. The page's placement does this division
// and centres the layout's area on the paper.
#pragma once

#include <optional>
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

// Maps the points of a drawing to the paper.
struct Placement {
    double x(double mm) const { return origin.x + mm * scale.x; }
    double y(double mm) const { return origin.y + mm * scale.y; }
    Point at(const Point &point) const { return {x(point.x), y(point.y)}; }

    Point origin;
    Point scale{1.0, 1.0};
};

// A page refers to its pattern, which must outlive the page.
struct PrintedPage {
    const DrawnPattern *pattern = nullptr;
    PageSize paper;
    Placement placement;  // maps the layout to the paper; the members below, except `window`, are in layout coordinates
    Point patternPlace;   // where the origin of the pattern's geometry is
    // The part of the pattern that is on the page, in the coordinates of the pattern's geometry. If empty, the whole
    // pattern is on the page.
    std::optional<Rectangle> window;
    // The cut marks, or the lines of the drawing that shows how the sheets fit together. They do not overlap.
    std::vector<Rectangle> lines;
    std::vector<CheckBar> bars;
    std::vector<PageText> texts;  // all texts except the labels of the bars

    // Returns the placement of the pattern's geometry.
    Placement patternPlacement() const { return {placement.at(patternPlace), placement.scale}; }
};

// Returns the shapes of the pattern that are on the page. If the page shows only a part of the pattern, the function
// puts the shapes of this part into `part` and returns `part`.
const PatternGeometry &visibleGeometry(const PrintedPage &page, PatternGeometry &part);

// Makes a page with the pattern, the bars and a caption in the places of the layout. The caption is `captionStart`
// followed by the caption of the pattern.
PrintedPage makePage(const DrawnPattern &pattern, const PageLayout &layout, const DrawingOptions &options,
                     const std::string &captionStart);

// Returns the label of a bar, such as "100 mm".
PageText labelOf(const CheckBar &bar);

// Returns the width of the text on the page.
double widthOf(const PageText &text);

}  // namespace lmlib64
