// The contents of a PDF page as drawing operators: the shapes of a pattern, the two check bars with their labels, and
// the caption.
#pragma once

#include <string>

#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// The resource name of the font of the captions.
constexpr const char *captionFontName = "/F1";

// The contents of the page in true size. Every edge is within 0.01 um of its place; the outline of a circle may be off
// by another five millionths of its radius.
std::string pdfPageContents(const PrintedPage &page);

// A length in points, in PDF notation.
std::string pdfPoints(double mm);

}  // namespace lmlib64
