// Writes the description of patterns for other programs; docs/pattern-file.md documents the format.
#pragma once

#include <string>

#include "camera_library/output/pattern_document.h"

namespace lmlib64 {

// Returns the whole file in UTF-8. It ends in a line break.
std::string patternJson(const PatternDocument &document);

// Returns the same text with only one pattern of the document. Every .svg and .png file contains this text.
std::string patternJson(const PatternDocument &document, const DrawnPattern &pattern);

}  // namespace lmlib64
