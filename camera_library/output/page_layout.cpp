#include "camera_library/output/page_layout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace lmlib64 {

namespace {

constexpr double margin = 5.0;
constexpr double gap = 2.0;             // between the quiet zone and a bar
constexpr double captionDepth = 4.5;    // from a bar's ticks down to the caption's baseline
constexpr double captionDescent = 1.0;  // below the baseline
constexpr double bottomStrip = gap + CheckBar::depth + captionDepth + captionDescent;
constexpr double sideStrip = gap + CheckBar::depth;
constexpr double labelGap = 1.5;  // between a bar and its label
constexpr double longestBar = 100.0;
constexpr double barStep = 10.0;
constexpr double smallestMeasuredSide = 210.0;  // least side of a custom page's area, so that bars and caption fit
constexpr double tolerance = 1e-9;              // a pattern that fits exactly must not fail because of rounding

constexpr std::array standardPages{
    PageSize{210, 297}, PageSize{297, 210}, PageSize{297, 420}, PageSize{420, 297},  PageSize{420, 594},
    PageSize{594, 420}, PageSize{594, 841}, PageSize{841, 594}, PageSize{841, 1189}, PageSize{1189, 841},
};

// Returns the size of the pattern with its quiet zone.
PageSize blockOf(const PatternGeometry &geometry) {
    return {geometry.width + 2.0 * geometry.quietZone, geometry.height + 2.0 * geometry.quietZone};
}

double wholeSteps(double length) {
    return std::min(longestBar, std::floor((length + tolerance) / barStep) * barStep);
}

// Places one bar to the left of the pattern and the other below it. If the pattern is small, the bars are placed
// farther away from it, so that they do not overlap each other. `block` is the size of what the page shows:
// the pattern with its quiet zone, or a part of them. `freeX` is the distance from the left side of the block to the
// margin of the page. `freeY` is the distance from the lower side of the block to the margin.
void placeBarsAlongside(PageLayout &layout, PageSize block, double freeX, double freeY) {
    const Point centre{layout.area.width / 2.0, layout.area.height / 2.0};
    const double reach = longestBar / 2.0;
    const double left = centre.x - std::min(std::max(block.width / 2.0, reach), block.width / 2.0 + freeX - sideStrip);
    const double below =
        centre.y + std::min(std::max(block.height / 2.0, reach), block.height / 2.0 + freeY - bottomStrip);
    const Point x{centre.x - reach, below + gap};
    const Point y{left - sideStrip, centre.y - reach};
    layout.barAlongX = {x, longestBar, false, {x.x + longestBar + labelGap, x.y + CheckBar::depth}};
    layout.barAlongY = {y, longestBar, true, {y.x + CheckBar::depth, y.y - labelGap}};
    layout.caption = {centre.x, below + gap + CheckBar::depth + captionDepth};
}

// Places both bars below a pattern that leaves no room at its sides.
void placeBarsBelow(PageLayout &layout, PageSize block, double lengthAlongY) {
    const Point centre{layout.area.width / 2.0, layout.area.height / 2.0};
    const double bottom = centre.y + block.height / 2.0 + gap + lengthAlongY;
    const Point x{centre.x - longestBar / 2.0, bottom - CheckBar::depth};
    const Point y{x.x - gap - 2.0 * CheckBar::depth, bottom - lengthAlongY};
    layout.barAlongX = {x, longestBar, false, {x.x + longestBar + labelGap, bottom}};
    layout.barAlongY = {y, lengthAlongY, true, {y.x - labelGap, bottom}};
    layout.caption = {centre.x, bottom + captionDepth};
}

// Returns PageLayout::area for this paper.
PageSize areaOf(PageSize paper, std::array<double, 2> printScale) {
    return {paper.width * std::min(1.0, printScale[0]), paper.height * std::min(1.0, printScale[1])};
}

// Returns the bar, which runs from the origin to the right, and then its ticks from left to right.
std::vector<Rectangle> barAndTicks(double length) {
    constexpr double lineWidth = 0.25;
    constexpr double tickWidth = 0.2;
    const int steps = static_cast<int>(std::lround(length / barStep));
    std::vector<Rectangle> shapes{{0.0, 0.0, length, lineWidth}};
    for (int step = 0; step <= steps; ++step) {
        // The first and the last tick lie within the bar, so that the bar has its exact length from edge to edge.
        const double middle = std::clamp(step * barStep, tickWidth / 2.0, length - tickWidth / 2.0);
        const bool isEnd = step == 0 || step == steps;
        const double tick = isEnd ? CheckBar::depth : (step % 5 == 0 ? 2.2 : 1.4);
        const double left = step == steps ? length - tickWidth : middle - tickWidth / 2.0;
        shapes.push_back({left, 0.0, step == steps ? length : middle + tickWidth / 2.0, tick});
    }
    return shapes;
}

}  // namespace

std::optional<PageLayout> layOutPage(const PatternGeometry &geometry, std::array<double, 2> printScale) {
    for (const PageSize &paper : standardPages) {
        if (const std::optional<PageLayout> layout = layOutOnPaper(paper, geometry, printScale)) {
            return layout;
        }
    }
    const PageSize block = blockOf(geometry);
    const PageSize measured{std::max(block.width + 2.0 * (margin + sideStrip), smallestMeasuredSide),
                            std::max(block.height + 2.0 * (margin + bottomStrip), smallestMeasuredSide)};
    const PageSize paper{measured.width / std::min(1.0, printScale[0]), measured.height / std::min(1.0, printScale[1])};
    if (std::max(paper.width, paper.height) > largestPageSide) {
        return std::nullopt;
    }
    return layOutOnPaper(paper, geometry, printScale);
}

std::optional<PageLayout> layOutOnPaper(PageSize paper, const PatternGeometry &geometry,
                                        std::array<double, 2> printScale) {
    std::optional<PageLayout> layout = layOutOnPaper(paper, blockOf(geometry), printScale);
    if (layout) {
        layout->pattern = {(layout->area.width - geometry.width) / 2.0, (layout->area.height - geometry.height) / 2.0};
    }
    return layout;
}

std::optional<PageLayout> layOutOnPaper(PageSize paper, PageSize block, std::array<double, 2> printScale) {
    const PageSize area = areaOf(paper, printScale);
    const double freeX = (area.width - block.width) / 2.0 - margin + tolerance;
    const double freeY = (area.height - block.height) / 2.0 - margin + tolerance;
    if (freeX < 0.0 || freeY < bottomStrip) {
        return std::nullopt;
    }
    PageLayout layout;
    layout.paper = paper;
    layout.area = area;
    layout.block = {(area.width - block.width) / 2.0, (area.height - block.height) / 2.0};
    layout.captionWidth = area.width - 2.0 * margin;
    if (freeX >= sideStrip) {
        placeBarsAlongside(layout, block, freeX, freeY);
        return layout;
    }
    const double lengthBelow = wholeSteps(freeY - gap - captionDepth - captionDescent);
    if (lengthBelow < barStep) {
        return std::nullopt;
    }
    placeBarsBelow(layout, block, lengthBelow);
    return layout;
}

PageSize largestBlock(PageSize paper, std::array<double, 2> printScale) {
    const PageSize area = areaOf(paper, printScale);
    return {area.width - 2.0 * (margin + sideStrip), area.height - 2.0 * (margin + bottomStrip)};
}

std::vector<Rectangle> checkBarShapes(const CheckBar &bar) {
    std::vector<Rectangle> shapes = barAndTicks(bar.length);
    for (Rectangle &shape : shapes) {
        if (bar.isAlongY) {
            shape = {shape.top, shape.left, shape.bottom, shape.right};
        }
        shape = {shape.left + bar.start.x, shape.top + bar.start.y, shape.right + bar.start.x,
                 shape.bottom + bar.start.y};
    }
    return shapes;
}

Polygon checkBarOutline(const CheckBar &bar) {
    const std::vector<Rectangle> shapes = barAndTicks(bar.length);
    Polygon outline{{0.0, 0.0}, {bar.length, 0.0}};
    for (std::size_t tick = shapes.size() - 1; tick > 0; --tick) {
        const Rectangle &shape = shapes[tick];
        outline.insert(outline.end(), {{shape.right, shape.bottom}, {shape.left, shape.bottom}});
        if (tick > 1) {
            const double underside = shapes.front().bottom;
            outline.insert(outline.end(), {{shape.left, underside}, {shapes[tick - 1].right, underside}});
        }
    }
    for (Point &corner : outline) {
        corner = bar.isAlongY ? Point{corner.y, corner.x} : corner;
        corner = {corner.x + bar.start.x, corner.y + bar.start.y};
    }
    return outline;
}

}  // namespace lmlib64
