#include "camera_library/output/sheet_pages.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

constexpr double lineWidth = 0.2;
constexpr double half = lineWidth / 2.0;

// Distances of a cut mark's two ends from the block, which is the part of the pattern on the sheet. The marks lie in
// the gap between the block and the check bars.
constexpr double markStart = 0.3;
constexpr double markEnd = 1.8;

void addMarks(PrintedPage &page, const SheetPlan &plan, std::size_t column, std::size_t row) {
    const Placement place{page.patternPlace};
    const Rectangle &window = *page.window;
    const Rectangle block{place.x(window.left), place.y(window.top), place.x(window.right), place.y(window.bottom)};
    for (std::size_t i = std::max<std::size_t>(column, 1); i <= std::min(column + 1, plan.columns() - 1); ++i) {
        const double x = place.x(plan.cutsX[i]);
        page.lines.push_back({x - half, block.top - markEnd, x + half, block.top - markStart});
        page.lines.push_back({x - half, block.bottom + markStart, x + half, block.bottom + markEnd});
    }
    for (std::size_t i = std::max<std::size_t>(row, 1); i <= std::min(row + 1, plan.rows() - 1); ++i) {
        const double y = place.y(plan.cutsY[i]);
        page.lines.push_back({block.left - markEnd, y - half, block.left - markStart, y + half});
        page.lines.push_back({block.right + markStart, y - half, block.right + markEnd, y + half});
    }
}

PrintedPage sheetPage(const DrawnPattern &pattern, const SheetPlan &plan, const DrawingOptions &options,
                      std::size_t column, std::size_t row) {
    const Rectangle window = plan.window(column, row);
    const PageSize block{window.right - window.left, window.bottom - window.top};
    const PageLayout layout = layOutOnPaper(plan.paper, block, options.printScaleOrNone()).value();
    PrintedPage page =
        makePage(pattern, layout, options,
                 "sheet " + std::to_string(plan.number(column, row)) + " of " + std::to_string(plan.count()) +
                     ", column " + std::to_string(column + 1) + ", row " + std::to_string(row + 1) + ": ");
    page.window = window;
    page.patternPlace = {layout.block.x - window.left, layout.block.y - window.top};
    addMarks(page, plan, column, row);
    return page;
}

std::vector<std::string> instructions(const PatternGeometry &geometry, const SheetPlan &plan) {
    return {
        "Plan of " + std::to_string(plan.count()) + " sheets, " + std::to_string(plan.columns()) + " columns and " +
            std::to_string(plan.rows()) + " rows",
        "1. Print all sheets at 100 % and measure the check bars.",
        "2. If a sheet has a neighbour to its left or above it, cut off the edge on that side along the cut marks.",
        "3. Lay the sheets down in the order of their numbers. Put each cut edge onto the uncut edge of the neighbour,",
        "so that it lies between the neighbour's cut marks and the pattern continues in straight lines.",
        "4. Glue the sheets to a flat board and measure the pattern. Without the quiet zone, it is " +
            numberText(wholeNanometres(geometry.width)) + " x " + numberText(wholeNanometres(geometry.height)) + " mm.",
    };
}

constexpr double textStep = 5.0;

// Returns the number of a sheet as a text in the middle of the sheet's place in the plan.
PageText numberIn(const Rectangle &place, std::size_t number) {
    constexpr double largest = 12.0;
    constexpr double halfDigit = 0.36;  // half the height of a digit at text size 1
    const double width = place.right - place.left;
    const double height = place.bottom - place.top;
    PageText text{std::to_string(number), std::min({largest, width / 2.5, height / 2.5}), {}, false};
    text.start = {place.left + (width - widthOf(text)) / 2.0, place.top + height / 2.0 + halfDigit * text.size};
    return text;
}

// Draws the cuts, the edges of the quiet zone, and the numbers of the sheets.
void addPlanDrawing(PrintedPage &page, const SheetPlan &plan, const Placement &place) {
    const double top = place.y(plan.cutsY.front()) - half;
    const double bottom = place.y(plan.cutsY.back()) + half;
    for (const double cut : plan.cutsX) {
        page.lines.push_back({place.x(cut) - half, top, place.x(cut) + half, bottom});
    }
    for (std::size_t column = 0; column < plan.columns(); ++column) {
        const double left = place.x(plan.cutsX[column]) + half;
        const double right = place.x(plan.cutsX[column + 1]) - half;
        for (const double cut : plan.cutsY) {
            page.lines.push_back({left, place.y(cut) - half, right, place.y(cut) + half});
        }
        for (std::size_t row = 0; row < plan.rows(); ++row) {
            page.texts.push_back(numberIn({left, place.y(plan.cutsY[row]), right, place.y(plan.cutsY[row + 1])},
                                          plan.number(column, row)));
        }
    }
}

PrintedPage planPage(const DrawnPattern &pattern, const SheetPlan &plan, const DrawingOptions &options) {
    const PageSize block = largestBlock(plan.paper, options.printScaleOrNone());
    const PageLayout layout = layOutOnPaper(plan.paper, block, options.printScaleOrNone()).value();
    PrintedPage page = makePage(pattern, layout, options, "");
    page.bars.clear();
    page.window = Rectangle{};  // empty, so that the pattern itself is not drawn

    const std::vector<std::string> steps = instructions(pattern.geometry, plan);
    const double textHeight = textStep * static_cast<double>(steps.size() + 1);
    const PageSize whole{plan.cutsX.back() - plan.cutsX.front(), plan.cutsY.back() - plan.cutsY.front()};
    const double reduction = std::min(block.width / whole.width, (block.height - textHeight) / whole.height);
    const Placement place{{(layout.area.width - whole.width * reduction) / 2.0 - plan.cutsX.front() * reduction,
                           layout.block.y - plan.cutsY.front() * reduction},
                          {reduction, reduction}};
    addPlanDrawing(page, plan, place);
    double baseline = place.y(plan.cutsY.back());
    for (const std::string &step : steps) {
        constexpr double textSize = 3.2;
        baseline += textStep;
        PageText text{step, textSize, {layout.block.x, baseline}, false};
        text.size *= std::min(1.0, block.width / widthOf(text));
        page.texts.push_back(text);
    }
    return page;
}

}  // namespace

void addSheetPages(const DrawnPattern &pattern, const SheetPlan &plan, const DrawingOptions &options,
                   std::vector<PrintedPage> &pages) {
    pages.reserve(pages.size() + plan.count() + 1);
    pages.push_back(planPage(pattern, plan, options));
    for (std::size_t row = 0; row < plan.rows(); ++row) {
        for (std::size_t column = 0; column < plan.columns(); ++column) {
            pages.push_back(sheetPage(pattern, plan, options, column, row));
        }
    }
}

}  // namespace lmlib64
