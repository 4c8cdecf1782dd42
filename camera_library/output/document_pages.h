// Makes the pages of a document.
#pragma once

#include <vector>

#include "camera_library/output/pattern_document.h"
#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// Makes one page per pattern. If a pattern is split over sheets, makes a page with the plan of the sheets instead,
// followed by one page per sheet. The pages refer to the document, which must outlive them. Throws PatternTooLarge if a
// pattern cannot be printed; the exception's text names the first such pattern.
std::vector<PrintedPage> pagesOf(const PatternDocument &document);

}  // namespace lmlib64
