// What a file is made of: the patterns of one run of the command, drawn once. Every format takes the same document.
#pragma once

#include <stdexcept>
#include <vector>

#include "camera_library/pattern/pattern_description.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

struct DrawnPattern {
    PatternDescription description;
    PatternGeometry geometry;
};

struct PatternDocument {
    bool encodingParameter = true;       // the command's own "Encoding"
    std::vector<DrawnPattern> patterns;  // at least one
};

// Thrown by a format that cannot hold a pattern of this size. The text is one sentence for the user.
struct PatternTooLarge : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace lmlib64
