// A PDF document of printed pages: true size, what is said about the document, and the attached description.
#pragma once

#include <string>
#include <vector>

#include "camera_library/output/pdf_page.h"

namespace lmlib64 {

/// One page per pattern. Names the document `title` (UTF-8), asks viewers to print it unscaled, and attaches
/// `patternJson` as "pattern.json". Neither date nor chance enters: the same arguments give the same bytes. Throws
/// std::bad_alloc.
std::string makePdf(const std::vector<PrintedPage> &pages, const std::string &title, const std::string &patternJson);

}  // namespace lmlib64
