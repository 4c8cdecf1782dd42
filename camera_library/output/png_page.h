// Writes a page as a PNG picture in true size, for printing services and for screens.
#pragma once

#include <string>

#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// Returns the file. It has one 8-bit channel; the grey value of a pixel is the share of its area that is light, times
// 255. The pattern's top-left corner is on a pixel's corner. If the side of a square is a whole number of pixels, the
// edges of squares run between pixels. If a third of that side is also a whole number of pixels, the edges of marks run
// between pixels, too. The file states the resolution in whole pixels per metre. Its text chunks hold the title, the
// library's name and the pattern's JSON text. Only a few rows of pixels are in memory at a time. Throws PatternTooLarge
// if the picture would have more than largestPngSide pixels along a side, and std::bad_alloc.
std::string pngPage(const PrintedPage &page, const PatternDocument &document);

constexpr int largestPngSide = 65535;

}  // namespace lmlib64
