// Divides a pattern that is larger than the paper into several sheets, which are cut and glued together. All lengths
// are in millimetres, in coordinates of the pattern's geometry.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "camera_library/output/page_layout.h"
#include "camera_library/output/pattern_document.h"

namespace lmlib64 {

// A sheet extends by this length beyond each cut that it shares with a neighbour, so that the two sheets overlap by
// twice this length.
constexpr double sheetOverlap = 6.0;

struct SheetPlan {
    PageSize paper;
    // The places of the cuts. The first and the last are the edges of the quiet zone.
    std::vector<double> cutsX;
    std::vector<double> cutsY;

    std::size_t columns() const { return cutsX.size() - 1; }
    std::size_t rows() const { return cutsY.size() - 1; }
    std::size_t count() const { return columns() * rows(); }
    // Returns the number of a sheet. The sheets are counted from 1, row by row.
    std::size_t number(std::size_t column, std::size_t row) const { return row * columns() + column + 1; }

    // Returns the part of the pattern that is printed on the sheet.
    Rectangle window(std::size_t column, std::size_t row) const;
};

// Returns the plan with the fewest sheets. The cuts are placed so that, along x and along y, the longest sheet is as
// short as possible. If the paper may be turned, it is in landscape only if that saves sheets or if portrait is
// impossible. No cut runs through a square, a mark or a dot. The result is empty if the paper is so small that a cut
// would have to run through one of them. The number of sheets has no limit here.
std::optional<SheetPlan> planSheets(const PatternGeometry &geometry, const Paper &paper,
                                    std::array<double, 2> printScale);

// Returns the size of the paper and, if the paper may be turned, its size after a turn by 90 degrees. Only a paper with
// a name, such as A4, may be turned.
std::vector<PageSize> orientations(const Paper &paper);

}  // namespace lmlib64
