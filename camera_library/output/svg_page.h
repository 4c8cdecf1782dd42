// Writes a page as an SVG drawing in true size, for cutters, engravers and drawing programs.
#pragma once

#include <string>

#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// Returns the drawing; its unit is a millimetre. The pattern is one path, filled by the even-odd rule. The error of its
// coordinates is at most 0.01 um. Circles are arcs, but a circle that the edge of a sheet cuts is a polygon with errors
// of about 0.2 um. The check bars are a second path. The third path has the cut marks of a
// sheet, or the lines of the page that shows how the sheets go together. Texts remain texts. The JSON text of the
// pattern is the drawing's metadata. Throws std::bad_alloc.
std::string svgPage(const PrintedPage &page, const PatternDocument &document);

}  // namespace lmlib64
