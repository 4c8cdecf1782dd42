// The pages of a document.
#pragma once

#include <vector>

#include "camera_library/output/pattern_document.h"
#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// One page per pattern, or a plan and the sheets of a pattern that is split. Refers to the document, which must outlive
// the pages. Throws PatternTooLarge, which names the first pattern that cannot be printed.
std::vector<PrintedPage> pagesOf(const PatternDocument &document);

}  // namespace lmlib64
