// Splits a pattern that is larger than the paper over sheets that are cut and glued together. Pure values in
// millimetres, in coordinates of the pattern's geometry.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "camera_library/output/page_layout.h"
#include "camera_library/output/pattern_document.h"

namespace lmlib64 {

// Every sheet is printed farther than the cuts around it, by this length: two neighbours overlap by twice as much.
constexpr double sheetOverlap = 6.0;

struct SheetPlan {
    PageSize paper;
    // The places of the cuts, with the edges of the quiet zone as the first and the last.
    std::vector<double> cutsX;
    std::vector<double> cutsY;

    std::size_t columns() const { return cutsX.size() - 1; }
    std::size_t rows() const { return cutsY.size() - 1; }
    std::size_t count() const { return columns() * rows(); }
    // From 1, row by row.
    std::size_t number(std::size_t column, std::size_t row) const { return row * columns() + column + 1; }

    // What is printed on the sheet.
    Rectangle window(std::size_t column, std::size_t row) const;
};

// The plan with the fewest sheets, of about the same size, upright if the paper may be turned and nothing is gained by
// it. All cuts are between squares or marks. Empty if the paper is too small for that.
std::optional<SheetPlan> planSheets(const PatternGeometry &geometry, const Paper &paper,
                                    std::array<double, 2> printScale);

// The paper, and the same turned by 90 degrees if it may be turned.
std::vector<PageSize> orientations(const Paper &paper);

}  // namespace lmlib64
