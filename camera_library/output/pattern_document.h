// The document that a file is made from: the patterns of one GenerateCalibrationPattern command and their geometry. It
// is made once, and every file format is written from it.
#pragma once

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "camera_library/output/page_layout.h"
#include "camera_library/pattern/pattern_description.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

struct DrawnPattern {
    PatternDescription description;
    PatternGeometry geometry;
};

// The paper of all pages.
struct Paper {
    std::string name;  // the value of "Paper"; empty if that value is a size
    PageSize size;     // a named paper is in portrait here, and a page may use it in landscape
};

// The parameters of the command that determine how a file is drawn. A parameter that is not given is empty.
struct DrawingOptions {
    std::optional<int> resolution;  // of pictures, in dots per inch
    // The printed length divided by the true length, along x and y, as measured on an earlier print made at 100 %. All
    // lengths on a page are divided by these numbers, so that the next print has the true size.
    std::optional<std::array<double, 2>> printScale;
    std::optional<Paper> paper;  // if empty, every page has the smallest paper on which its pattern fits
    std::optional<bool> sheets;  // true: a pattern that is larger than the paper is split over several sheets

    std::array<double, 2> printScaleOrNone() const { return printScale.value_or(std::array{1.0, 1.0}); }
};

constexpr int defaultResolution = 600;

struct PatternDocument {
    bool encodingParameter = true;  // the command's "Encoding"; a Halcon-style plate also has an "Encoding" of its own
    DrawingOptions options;
    std::vector<DrawnPattern> patterns;  // at least one
};

// Thrown if a pattern is too large for the paper or for the format. The text is one sentence for the user.
struct PatternTooLarge : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace lmlib64
