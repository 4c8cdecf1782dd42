// Makes the pages of a pattern that is split over sheets.
#pragma once

#include <vector>

#include "camera_library/output/printed_page.h"
#include "camera_library/output/sheets.h"

namespace lmlib64 {

// Adds a page with a plan of the sheets and instructions, and then the sheets, row by row. Each sheet has its part of
// the pattern, two cut marks for each edge at which it has a neighbour, the check bars, and a caption that begins with
// the number of the sheet.
void addSheetPages(const DrawnPattern &pattern, const SheetPlan &plan, const DrawingOptions &options,
                   std::vector<PrintedPage> &pages);

}  // namespace lmlib64
