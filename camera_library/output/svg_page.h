// A page as an SVG drawing in true millimetres, for cutters, engravers and drawing programs.
#pragma once

#include <string>

#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// The page, whose user unit is a millimetre. The pattern is one path that is filled by the even-odd rule; all its
// coordinates are within 0.01 um of their places, and its circles are arcs. The check bars are a second path, and the
// texts are texts. The JSON text of the pattern is the document's metadata. Throws std::bad_alloc.
std::string svgPage(const PrintedPage &page, const PatternDocument &document);

}  // namespace lmlib64
