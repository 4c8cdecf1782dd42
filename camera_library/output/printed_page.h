// A page of a document, as every format with pages draws it: the pattern, the check bars with their labels, and
// the texts. Pure values in millimetres; x runs to the right and y down from the top-left corner of the paper.
//
// A page is laid out as the finished print is to measure. A printer that makes everything longer by the document's
// print scale gets it drawn shorter by as much, around the middle of the paper; that is the page's placement.
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

// Where the points of a drawing are on the paper.
struct Placement {
    double x(double mm) const { return origin.x + mm * scale.x; }
    double y(double mm) const { return origin.y + mm * scale.y; }
    Point at(const Point &point) const { return {x(point.x), y(point.y)}; }

    Point origin;
    Point scale{1.0, 1.0};
};

// Refers to the pattern, which must outlive it.
struct PrintedPage {
    const DrawnPattern *pattern = nullptr;
    PageSize paper;
    Placement placement;  // of the layout, whose coordinates everything below has
    Point patternPlace;   // of the origin of the pattern's geometry
    // The part of the pattern that is on the page, in coordinates of its geometry; if empty, all of it.
    std::optional<Rectangle> window;
    std::vector<Rectangle> lines;  // that show where to cut; they do not overlap
    std::vector<CheckBar> bars;
    std::vector<PageText> texts;  // all but the labels of the bars

    // Of the coordinates of the pattern's geometry.
    Placement patternPlacement() const { return {placement.at(patternPlace), placement.scale}; }
};

// The shapes of the pattern that are on the page. If they are only a part, they are put into `part`.
const PatternGeometry &visibleGeometry(const PrintedPage &page, PatternGeometry &part);

// A page with the pattern, the bars and a caption, in these places. The caption is that of the pattern, after
// `captionStart`.
PrintedPage makePage(const DrawnPattern &pattern, const PageLayout &layout, const DrawingOptions &options,
                     const std::string &captionStart);

// "100 mm"
PageText labelOf(const CheckBar &bar);

// The width of the text on the page.
double widthOf(const PageText &text);

}  // namespace lmlib64
