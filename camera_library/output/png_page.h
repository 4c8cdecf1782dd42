// A page as a PNG picture in true size, for printing services and for screens.
#pragma once

#include <string>

#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// One 8-bit channel; the grey of each pixel is the share of its area that is light. The pattern's top-left corner is on
// a pixel's corner, so every edge is exactly between black and white pixels if the sides of its squares, and a third of
// them for the marks, are whole numbers of pixels. The size of a pixel is written into the file, in whole pixels per
// metre, and the document's JSON text, title and library as texts. Needs memory for one row of pixels and the file.
// Throws PatternTooLarge if the picture would have more than largestPngSide pixels along a side, and std::bad_alloc.
std::string pngPage(const PrintedPage &page, const PatternDocument &document);

constexpr int largestPngSide = 65535;

}  // namespace lmlib64
