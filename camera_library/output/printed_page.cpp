#include "camera_library/output/printed_page.h"

#include <algorithm>
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
PageText captionOf(const DrawnPattern &pattern, const PageLayout &layout) {
    PageText caption{patternCaption(pattern.description, pattern.geometry), captionSize, layout.caption, false};
    caption.size *= std::min(1.0, layout.captionWidth / widthOf(caption));
    caption.start.x -= widthOf(caption) / 2.0;
    return caption;
}

PrintedPage printedPage(const DrawnPattern &pattern, std::size_t index) {
    const PatternGeometry &geometry = pattern.geometry;
    const std::optional<PageLayout> layout = layOutPage(geometry);
    if (!layout) {
        throw PatternTooLarge("The pattern \"Patterns\"[" + std::to_string(index) + "] is " +
                              numberText(geometry.width) + " mm x " + numberText(geometry.height) +
                              " mm and needs a page larger than a file can have; with its quiet zone, check bars and "
                              "margins it must fit on a page of " +
                              numberText(largestPageSide) + " mm x " + numberText(largestPageSide) + " mm.");
    }
    return {&pattern,
            layout->width,
            layout->height,
            {layout->pattern},
            {layout->barAlongX, layout->barAlongY},
            {captionOf(pattern, *layout)}};
}

}  // namespace

std::vector<PrintedPage> printedPages(const PatternDocument &document) {
    std::vector<PrintedPage> pages;
    pages.reserve(document.patterns.size());
    for (std::size_t index = 0; index < document.patterns.size(); ++index) {
        pages.push_back(printedPage(document.patterns[index], index));
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
