// The pages of a PDF as Cairo draws them: vector shapes and text, one page per pattern. What Cairo cannot say
// about a document is added in pdf_document.h.
#pragma once

#include <string>
#include <vector>

#include "camera_library/output/page_layout.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

/// One page with all that stands on it.
struct PrintedPage {
    PatternGeometry geometry;
    PageLayout layout;
    std::string caption;  ///< UTF-8
};

/// Page units to the millimetre. Cairo rounds coordinates to 1/256 unit, so drawing in hundredths of a
/// millimetre keeps every edge within 0.02 um of where it belongs, where points would lose up to 0.7 um. The
/// pages are too large by this and have to be scaled down to points.
constexpr double pageUnitsPerMm = 100.0;

/// The bytes of a PDF whose pages are scaled as above. Throws std::runtime_error where Cairo fails.
std::string drawPdfPages(const std::vector<PrintedPage> &pages);

}  // namespace lmlib64
