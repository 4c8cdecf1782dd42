#include "camera_library/output/printed_page.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#include "camera_library/output/caption_font.h"
#include "camera_library/output/pattern_text.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

constexpr double captionSize = 2.5;
constexpr double labelSize = 2.3;

// Centred, and smaller than usual if it would be too wide.
PageText captionOf(const DrawnPattern &pattern, const PageLayout &layout, const DrawingOptions &options) {
    PageText caption{patternCaption(pattern.description, pattern.geometry, options.printScale), captionSize,
                     layout.caption, false};
    caption.size *= std::min(1.0, layout.captionWidth / widthOf(caption));
    caption.start.x -= widthOf(caption) / 2.0;
    return caption;
}

// Divides lengths by the print scale, around the middle of the paper.
Placement placementOf(const PageLayout &layout, std::array<double, 2> printScale) {
    const Point scale{1.0 / printScale[0], 1.0 / printScale[1]};
    return {{(layout.paper.width - layout.area.width * scale.x) / 2.0,
             (layout.paper.height - layout.area.height * scale.y) / 2.0},
            scale};
}

PrintedPage printedPage(const DrawnPattern &pattern, std::size_t index, const DrawingOptions &options) {
    const PatternGeometry &geometry = pattern.geometry;
    const std::array<double, 2> printScale = options.printScale.value_or(std::array{1.0, 1.0});
    const std::optional<PageLayout> layout = layOutPage(geometry, printScale);
    if (!layout) {
        throw PatternTooLarge("The pattern \"Patterns\"[" + std::to_string(index) + "] is " +
                              numberText(geometry.width) + " mm x " + numberText(geometry.height) +
                              " mm and needs a page larger than a file can have; with its quiet zone, check bars and "
                              "margins it must fit on a page of " +
                              numberText(largestPageSide) + " mm x " + numberText(largestPageSide) + " mm.");
    }
    return {&pattern,
            layout->paper,
            placementOf(*layout, printScale),
            layout->pattern,
            {layout->barAlongX, layout->barAlongY},
            {captionOf(pattern, *layout, options)}};
}

}  // namespace

std::vector<PrintedPage> printedPages(const PatternDocument &document) {
    std::vector<PrintedPage> pages;
    pages.reserve(document.patterns.size());
    for (std::size_t index = 0; index < document.patterns.size(); ++index) {
        pages.push_back(printedPage(document.patterns[index], index, document.options));
    }
    return pages;
}

PageText labelOf(const CheckBar &bar) {
    return {numberText(bar.length) + " mm", labelSize, bar.label, bar.isAlongY};
}

double widthOf(const PageText &text) {
    return captionWidth(captionText(text.text), text.size);
}

}  // namespace lmlib64
