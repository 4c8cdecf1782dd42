// The description of patterns that programs read; docs/pattern-file.md documents it.
#pragma once

#include <string>

#include "camera_library/output/pattern_document.h"

namespace lmlib64 {

// The whole file in UTF-8, with a line break at its end.
std::string patternJson(const PatternDocument &document);

// The same with only this one of the document's patterns, for a file of one page.
std::string patternJson(const PatternDocument &document, const DrawnPattern &pattern);

}  // namespace lmlib64
