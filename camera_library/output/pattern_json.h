// The description of patterns for programs to read; docs/pattern-file.md is its documentation.
#pragma once

#include <string>
#include <vector>

#include "camera_library/pattern/pattern_description.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

/// The whole document in UTF-8, with a line break at its end. `geometries` belong to the request's patterns, one each.
std::string patternJson(const PatternRequest &request, const std::vector<PatternGeometry> &geometries);

}  // namespace lmlib64
