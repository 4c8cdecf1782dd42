// A page as a DXF drawing of release 12, for lasers, engravers and CAD.
#pragma once

#include <string>

#include "camera_library/output/printed_page.h"

namespace lmlib64 {

// The drawing unit is a millimetre; the origin is the bottom-left corner of the page, x runs to the right and y up.
// Layers: DARK has the outlines of all shapes of the pattern, of which those within another are holes, as closed
// polylines and circles (polylines that are at most 0.2 um off if the print scale differs in x and y); OUTLINE has the
// outer edge of the quiet zone; BARS has the check bars as closed polylines; CUTS has the marks of cuts; CAPTIONS has
// the texts, in ASCII. All coordinates are within 0.01 um of their places. Throws std::bad_alloc.
std::string dxfPage(const PrintedPage &page, const PatternDocument &document);

}  // namespace lmlib64
