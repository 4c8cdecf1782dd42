#include "camera_library/output/printed_page.h"

#include <algorithm>
#include <array>

#include "camera_library/output/caption_font.h"
#include "camera_library/output/pattern_text.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

constexpr double captionSize = 2.5;
constexpr double labelSize = 2.3;

// Returns the caption, centred. If the caption would be too wide, its text is smaller than usual.
PageText captionOf(const std::string &text, const PageLayout &layout) {
    PageText caption{text, captionSize, layout.caption, false};
    caption.size *= std::min(1.0, layout.captionWidth / widthOf(caption));
    caption.start.x -= widthOf(caption) / 2.0;
    return caption;
}

// Returns the placement that divides all lengths by the print scale and centres the layout's area on the paper.
Placement placementOf(const PageLayout &layout, std::array<double, 2> printScale) {
    const Point scale{1.0 / printScale[0], 1.0 / printScale[1]};
    return {{(layout.paper.width - layout.area.width * scale.x) / 2.0,
             (layout.paper.height - layout.area.height * scale.y) / 2.0},
            scale};
}

}  // namespace

PrintedPage makePage(const DrawnPattern &pattern, const PageLayout &layout, const DrawingOptions &options,
                     const std::string &captionStart) {
    PrintedPage page;
    page.pattern = &pattern;
    page.paper = layout.paper;
    page.placement = placementOf(layout, options.printScaleOrNone());
    page.patternPlace = layout.pattern;
    page.bars = {layout.barAlongX, layout.barAlongY};
    page.texts = {
        captionOf(captionStart + patternCaption(pattern.description, pattern.geometry, options.printScale), layout)};
    return page;
}

const PatternGeometry &visibleGeometry(const PrintedPage &page, PatternGeometry &part) {
    if (!page.window) {
        return page.pattern->geometry;
    }
    part = clippedTo(*page.window, page.pattern->geometry);
    return part;
}

PageText labelOf(const CheckBar &bar) {
    return {numberText(bar.length) + " mm", labelSize, bar.label, bar.isAlongY};
}

double widthOf(const PageText &text) {
    return captionWidth(captionText(text.text), text.size);
}

}  // namespace lmlib64
