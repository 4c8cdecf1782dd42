// Makes a PDF document: a page in true size for each pattern, the information about the document, and the attached
// description.
#pragma once

#include <string>

#include "camera_library/output/pattern_document.h"

namespace lmlib64 {

// One page per pattern. Asks viewers to print it unscaled, and attaches the pattern file as "pattern.json". It holds no
// date and nothing random: the same document gives the same bytes. Throws PatternTooLarge and std::bad_alloc.
std::string patternPdf(const PatternDocument &document);

}  // namespace lmlib64
