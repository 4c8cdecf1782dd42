#include "camera_library/output/sheets.h"

#include <algorithm>

namespace lmlib64 {

namespace {

// The range of a pattern with its quiet zone, along x or along y.
struct Extent {
    double begin = 0.0;         // where the quiet zone begins
    double end = 0.0;           // where the quiet zone ends
    std::vector<double> lines;  // where the pattern may be cut, in ascending order
};

Extent extentOf(double length, double quietZone, double firstLine, double pitch) {
    Extent extent{-quietZone, length + quietZone, {}};
    for (int line = -1; firstLine + line * pitch < length; ++line) {
        if (firstLine + line * pitch > 0.0) {
            extent.lines.push_back(firstLine + line * pitch);
        }
    }
    return extent;
}

// Returns the places of the cuts, from the beginning of the extent to its end. A sheet with its overlaps is at most
// `longest` long. Each sheet but the last is as long as the lines allow. The result is empty if two neighbouring lines
// are too far apart for sheets of this length.
std::vector<double> cutsFor(const Extent &extent, double longest) {
    std::vector<double> cuts{extent.begin};
    while (true) {
        const double begin = cuts.size() == 1 ? extent.begin : cuts.back() - sheetOverlap;
        if (extent.end - begin <= longest) {
            cuts.push_back(extent.end);
            return cuts;
        }
        const auto next = std::upper_bound(extent.lines.begin(), extent.lines.end(), begin + longest - sheetOverlap);
        if (next == extent.lines.begin() || *(next - 1) <= cuts.back()) {
            return {};
        }
        cuts.push_back(*(next - 1));
    }
}

// Returns the same number of cuts as cutsFor, but chooses their places so that the longest sheet is as short as
// possible, to within 0.01 mm. This makes the lengths of the sheets more even.
std::vector<double> evenCuts(const Extent &extent, double longest) {
    std::vector<double> cuts = cutsFor(extent, longest);
    double tooShort = 0.0;
    constexpr double tolerance = 0.01;
    while (!cuts.empty() && longest - tooShort > tolerance) {
        const double middle = (tooShort + longest) / 2.0;
        const std::vector<double> shorter = cutsFor(extent, middle);
        if (shorter.size() == cuts.size()) {
            cuts = shorter;
            longest = middle;
        } else {
            tooShort = middle;
        }
    }
    return cuts;
}

}  // namespace

Rectangle SheetPlan::window(std::size_t column, std::size_t row) const {
    return {column == 0 ? cutsX[0] : cutsX[column] - sheetOverlap, row == 0 ? cutsY[0] : cutsY[row] - sheetOverlap,
            column + 1 == columns() ? cutsX.back() : cutsX[column + 1] + sheetOverlap,
            row + 1 == rows() ? cutsY.back() : cutsY[row + 1] + sheetOverlap};
}

std::optional<SheetPlan> planSheets(const PatternGeometry &geometry, const Paper &paper,
                                    std::array<double, 2> printScale) {
    const Lattice &lattice = geometry.lattice;
    const Extent x =
        extentOf(geometry.width, geometry.quietZone, lattice.first.x + geometry.cutDistance, lattice.pitch);
    const Extent y =
        extentOf(geometry.height, geometry.quietZone, lattice.first.y + geometry.cutDistance, lattice.pitch);
    std::optional<SheetPlan> best;
    for (const PageSize &size : orientations(paper)) {
        const PageSize block = largestBlock(size, printScale);
        const SheetPlan plan{size, evenCuts(x, block.width), evenCuts(y, block.height)};
        if (!plan.cutsX.empty() && !plan.cutsY.empty() && (!best || plan.count() < best->count())) {
            best = plan;
        }
    }
    return best;
}

std::vector<PageSize> orientations(const Paper &paper) {
    if (paper.name.empty()) {
        return {paper.size};
    }
    return {paper.size, {paper.size.height, paper.size.width}};
}

}  // namespace lmlib64
