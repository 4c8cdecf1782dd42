#include "camera_library/output/document_pages.h"

#include <cstddef>
#include <optional>
#include <string>

#include "camera_library/output/sheet_pages.h"
#include "camera_library/output/sheets.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

constexpr std::size_t maximumSheets = 200;

std::optional<PageLayout> layOut(const PatternGeometry &geometry, const DrawingOptions &options) {
    if (!options.paper) {
        return layOutPage(geometry, options.printScaleOrNone());
    }
    for (const PageSize &paper : orientations(*options.paper)) {
        if (const std::optional<PageLayout> layout = layOutOnPaper(paper, geometry, options.printScaleOrNone())) {
            return layout;
        }
    }
    return std::nullopt;
}

std::string limitText(const DrawingOptions &options, const std::optional<SheetPlan> &plan) {
    if (plan) {
        return "needs " + std::to_string(plan->count()) + " sheets of this paper; at most " +
               std::to_string(maximumSheets) + " are allowed.";
    }
    if (options.paper && options.sheets.value_or(false)) {
        return "cannot be split over sheets of this paper: with margins, check bars and a caption, a sheet has so "
               "little room that a cut would have to run through a square, mark or dot.";
    }
    if (options.paper) {
        return "does not fit on the paper with its quiet zone, check bars and margins; set \"Sheets\" to true to split "
               "it over several sheets.";
    }
    const std::string side = numberText(largestPageSide);
    return "is too large for one page; with its quiet zone, check bars, caption and margins, it must fit on a page "
           "of " +
           side + " mm x " + side + " mm. This limit of PDF applies to all formats with pages.";
}

}  // namespace

std::vector<PrintedPage> pagesOf(const PatternDocument &document) {
    const DrawingOptions &options = document.options;
    std::vector<PrintedPage> pages;
    pages.reserve(document.patterns.size());
    for (std::size_t index = 0; index < document.patterns.size(); ++index) {
        const DrawnPattern &pattern = document.patterns[index];
        const PatternGeometry &geometry = pattern.geometry;
        if (const std::optional<PageLayout> layout = layOut(geometry, options)) {
            pages.push_back(makePage(pattern, *layout, options, ""));
            continue;
        }
        std::optional<SheetPlan> plan;
        if (options.paper && options.sheets.value_or(false)) {
            plan = planSheets(geometry, *options.paper, options.printScaleOrNone());
        }
        if (!plan || plan->count() > maximumSheets) {
            throw PatternTooLarge("The pattern \"Patterns\"[" + std::to_string(index) + "] is " +
                                  numberText(geometry.width) + " mm x " + numberText(geometry.height) + " mm and " +
                                  limitText(options, plan));
        }
        addSheetPages(pattern, *plan, options, pages);
    }
    return pages;
}

}  // namespace lmlib64
