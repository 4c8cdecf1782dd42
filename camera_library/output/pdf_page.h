// What stands on a page of a PDF, in PDF's drawing operators: a pattern's shapes, the two check bars with their labels,
// and the caption.
#pragma once

#include <string>

#include "camera_library/output/page_layout.h"
#include "camera_library/pattern/pattern_geometry.h"

namespace lmlib64 {

// One page with all that stands on it. Refers to a geometry that must outlive it.
struct PrintedPage {
    const PatternGeometry &geometry;
    PageLayout layout;
    std::string caption;  // UTF-8
};

// The name of the captions' font among the page's resources.
constexpr const char *captionFontName = "/F1";

// The page's contents at true size. Every edge is within 0.01 um of its place, and a circle's outline within five
// millionths of its radius more.
std::string pdfPageContents(const PrintedPage &page);

// A length in points, in PDF's notation.
std::string pdfPoints(double mm);

}  // namespace lmlib64
