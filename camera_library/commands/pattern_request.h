// Checks the parameters of "GenerateCalibrationPattern" and turns them into plain values. All parameters, with their
// ranges and defaults:
//
//   "Encoding"    boolean, default true; false draws every pattern plain
//   "ImageSize"   integer, 16 to 8000: longer side of the preview images in pixels. All previews together have at most
//                 256 million pixels, each counted as ImageSize x ImageSize
//   "Filename"    string in the local 8-bit encoding; its ending, in upper or lower case, selects a format of
//                 output/file_formats.cpp. The formats with one page per file, .svg, .png and .dxf, write a document of
//                 several pages to numbered files: name-00.svg, name-01.svg, ...
//   "Resolution"  integer, 20 to 4800, default 600: dots per inch of a .png file; other files are the same with it. The
//                 picture has at most 65,535 pixels along each side
//   "PrintScale"  two numbers, 0.9 to 1.1: how long a millimetre became in x and y when a file was printed at 100 %.
//                 Files are drawn divided by it, so that the next print has the true size; all sizes and positions in
//                 them are those of the finished print. The images of a preview are the same with it
//   "Paper"       "A4", "A3", "A2", "A1", "A0", "Letter", "Legal" or "Tabloid", which may be turned, or two numbers,
//   150
//                 to 5080: width and height in mm. If absent, every page is the smallest of A4 to A0 that holds it, or
//                 of its own size. A pattern that does not fit on the paper is refused
//   "Sheets"      boolean, default false; true splits a pattern that does not fit on "Paper" over up to 200 numbered
//                 sheets. Before them comes a page with a plan of how they go together
//   "Patterns"    array of 1 to 64 objects
//
// At least one of "ImageSize" and "Filename" must be given. Per pattern, with lengths in millimetres:
//
//   "Type"             type of a catalogue board, "SingleCustom", "Flexible" or "Assembly"; absent: the Halcon-style
//                      plate
//   "GridSize"         two integers, 2 to 200; required
//   "AssemblyPattern"  integer, 0 to 17, default 0
//   "GridSpacing"      0, or 0.001 to 1000; required, except for a catalogue board, which allows only its own value
//   "Thickness"        0 to 100, default 0; a catalogue board allows only its own value, which is then the default
//   "Offset"           two numbers, -9999 to 9999; if absent, the pattern is placed as with 0, 0
//   "Polarity"         boolean, default true
//   "Encoding"         boolean, default true
//
// pattern/pattern_types.cpp says which type has which of these. If both "Encoding" are true, the pattern carries its
// code, which must be able to hold the values: the grid spacing of all patterns except Flexible ones and plates with an
// "Offset" is a multiple of 0.01 mm and at most 130 mm; the thickness of catalogue, Single and Halcon patterns is a
// multiple of 0.01 mm; the offset of a Flexible pattern is a multiple of half the grid spacing, within 0.005 mm, and
// keeps the pattern inside the code's plane; the offset of a plate is -128 to 127 grid spacings. A plate's code holds
// the offset if "Offset" is given, otherwise the grid spacing and the thickness.
//
// Any other parameter is refused, because a misspelled name would otherwise print a wrong target. A pattern with a grid
// spacing of 0 has no extent; it is allowed only if no file is written.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "camera_library/output/pattern_document.h"
#include "camera_library/pattern/pattern_description.h"
#include "camera_library/tree/node.h"

namespace lmlib64 {

// All that one run of the command is to do. At least one of the two outputs is asked for.
struct PatternRequest {
    bool encodingParameter = true;        // the command's own "Encoding"
    std::optional<int> imageSize;         // longer side of the preview images in pixels
    std::optional<std::string> fileName;  // in the local 8-bit encoding; its ending selects a format
    DrawingOptions options;
    std::vector<PatternDescription> patterns;
};

// Throws CommandFailure for the first parameter that is not as described above.
PatternRequest readPatternRequest(const Node &parameters);

}  // namespace lmlib64
