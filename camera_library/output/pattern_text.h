// What is written about a pattern for people to read, in UTF-8.
#pragma once

#include <string>

#include "camera_library/pattern/pattern_description.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// "LmLib64" and the library's version.
std::string libraryName();

// "Flexible 15 × 15, grid spacing 12.5 mm"
std::string patternTitle(const PatternDescription &description);

// The one line below a printed pattern: type, size, grid spacing, thickness, offset, polarity, number of an
// assembly's pattern and library version, with all digits that the numbers have.
std::string patternCaption(const PatternDescription &description, const PatternGeometry &geometry);

}  // namespace lmlib64
