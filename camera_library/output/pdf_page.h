// Makes the contents of a PDF page: the drawing operators for the pattern, the check bars with their labels, the cut
// marks and the texts.
#pragma once

#include <string>

#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// The name of the captions' font in the resources of a page.
constexpr const char *captionFontName = "/F1";

// Returns the contents of the page in true size. The error of every edge is at most 0.01 um. The outline of a circle
// may have a further error of five millionths of its radius, or of 0.2 um if the edge of a sheet cuts the circle.
std::string pdfPageContents(const PrintedPage &page);

// Returns a length in points, in PDF notation.
std::string pdfPoints(double mm);

}  // namespace lmlib64
