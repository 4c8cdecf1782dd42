// Makes a PDF document: pages in true size, the information about the document, and the pattern file as an attachment.
#pragma once

#include <string>

#include "camera_library/output/pattern_document.h"

namespace lmlib64 {

// Returns the file. It has the pages of document_pages.h, asks viewers to print them unscaled, and has the pattern file
// attached as "pattern.json". It holds no date and nothing random: the same document gives the same bytes. Throws
// PatternTooLarge and std::bad_alloc.
std::string patternPdf(const PatternDocument &document);

}  // namespace lmlib64
