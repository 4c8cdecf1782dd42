// Makes texts that tell people about a pattern, in UTF-8.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "camera_library/pattern/pattern_description.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// Returns "LmLib64" and the version of the library.
std::string libraryName();

// Returns the title of a pattern, such as "Flexible 15 × 15, grid spacing 12.5 mm".
std::string patternTitle(const PatternDescription &description);

// Returns the line below a printed pattern: type, number of points, outer size, grid spacing, thickness, offset,
// polarity, the number of an assembly's pattern, the print scale if there is one, and the library's version. The outer
// size is rounded to whole nanometres. No other number is rounded.
std::string patternCaption(const PatternDescription &description, const PatternGeometry &geometry,
                           std::optional<std::array<double, 2>> printScale);

}  // namespace lmlib64
