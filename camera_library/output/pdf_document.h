// Makes a PDF document: pages in true size, the information about the document, and the pattern file as an attachment.
#pragma once

#include <string>

#include "camera_library/output/pattern_document.h"

namespace lmlib64 {

// Returns the file. The file has the pages of document_pages.h and asks viewers to print them unscaled. The pattern
// file is attached to it as "pattern.json". The file holds no date and no random numbers, so the same document gives
// the same bytes. Throws PatternTooLarge and std::bad_alloc.
std::string patternPdf(const PatternDocument &document);

}  // namespace lmlib64
