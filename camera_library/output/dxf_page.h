// Writes a page as a DXF drawing of release 12, for lasers, engravers and CAD.
#pragma once

#include <string>

#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// The drawing unit is a millimetre; the origin is the bottom-left corner of the page, x runs to the right and y up. The
// layer DARK has the outlines of the pattern's shapes as closed polylines and circles, to be filled by the even-odd
// rule: an outline inside another one is a hole. A circle becomes a polyline if the edge of a sheet cuts it, or if the
// print scale differs in x and y. OUTLINE has the outer edge of the quiet zone or, if the pattern is printed on several
// sheets, the edge of the part of the pattern on this sheet. BARS has the check bars as closed polylines, CUTS has the
// cut marks, and CAPTIONS has the texts in ASCII. On the page with the plan of the sheets, CUTS has the lines of the
// plan, and DARK, OUTLINE and BARS are empty. A polyline that replaces a circle has errors of about 0.2 um; all other
// coordinates have errors of at most 0.01 um. Throws std::bad_alloc.
std::string dxfPage(const PrintedPage &page, const PatternDocument &document);

}  // namespace lmlib64
