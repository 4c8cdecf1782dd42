// Checks the parameters of "GenerateCalibrationPattern" and turns them into plain values. All parameters, with their
// ranges and defaults:
//
//   "Encoding"    boolean, default true; false draws every pattern without its code
//   "ImageSize"   integer, 16 to 8000: longer side of the preview images in pixels. Each preview counts as ImageSize x
//                 ImageSize pixels, and all together may have at most 256 million pixels
//   "Filename"    string in the local 8-bit encoding; its ending, in upper or lower case, selects a format of
//                 output/file_formats.cpp. The formats .svg, .png and .dxf have one page per file and write a document
//                 of several pages to numbered files: name-00.svg, name-01.svg, ...
//   "Resolution"  integer, 20 to 4800, default 600: dots per inch of a .png file, which has at most 65,535 pixels along
//                 each side. "Resolution" does not affect how files of other formats are drawn
//   "PrintScale"  two numbers, 0.9 to 1.1, for x and y: the printed length divided by the true length, as measured on a
//                 print made at 100 %. On the pages of a file, lengths along x are divided by the first number and
//                 lengths along y by the second, so that the next print has the true size. Captions and the pattern
//                 file state the sizes of the finished print. Previews do not change
//   "Paper"       "A4", "A3", "A2", "A1", "A0", "Letter", "Legal" or "Tabloid", used in portrait or landscape; or two
//                 numbers, 150 to 5080: width and height in mm. If absent, every page has the smallest of the sizes A4
//                 to A0 that holds the pattern, or a custom size if none does. A pattern that does not fit on the paper
//                 is refused unless "Sheets" is true
//   "Sheets"      boolean, default false. If true, "Paper" is required, and a pattern that does not fit on the paper is
//                 split into at most 200 numbered sheets. The page before the sheets shows how to put them together
//   "Patterns"    array of 1 to 64 objects
//
// At least one of "ImageSize" and "Filename" must be given. A pattern can have these parameters; each type of pattern
// has only those that pattern/pattern_types.cpp lists for it. Lengths are in millimetres:
//
//   "Type"             type of a catalogue board, "SingleCustom", "Flexible" or "Assembly"; if absent, the pattern is
//                      the Halcon-style plate
//   "GridSize"         two integers, 2 to 200: lattice points along x and y; required
//   "AssemblyPattern"  integer, 0 to 17, default 0; the number of the pattern within its assembly
//   "GridSpacing"      0, or 0.001 to 1000; required, except for a catalogue board, which allows only its own value
//   "Thickness"        0 to 100, default 0; a catalogue board allows only its own value, which is then the default
//   "Offset"           two numbers, -9999 to 9999; if absent, the pattern is placed as with 0, 0
//   "Polarity"         boolean, default true; false exchanges dark and light
//   "Encoding"         boolean, default true; false draws this pattern without its code
//
// A pattern carries its code if its own "Encoding" and the command's are both true. The code of a Halcon-style plate
// holds the offset if "Offset" is given, otherwise the grid spacing and the thickness. If a pattern carries its code, a
// value that the code cannot hold is refused:
// - The grid spacing must be a multiple of 0.01 mm and at most 130 mm.
// - The thickness must be a multiple of 0.01 mm.
// - Flexible patterns, and Halcon-style plates with an "Offset", are exempt from both rules, because their code holds
//   neither value.
// - The offset of a Flexible pattern must be a multiple of half the grid spacing, to within 0.005 mm, and the pattern
//   must lie inside the code's plane.
// - The offset of a Halcon-style plate must be a multiple of the grid spacing, to within 0.005 mm, and from -128 to 127
//   grid spacings.
//
// Any other parameter is refused, because a misspelled name would otherwise print a wrong target. A pattern with a grid
// spacing of 0 has no extent. Such a pattern is allowed only if no file is written.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "camera_library/output/pattern_document.h"
#include "camera_library/pattern/pattern_description.h"
#include "camera_library/tree/node.h"

namespace lmlib64 {

// Everything that one run of the command is to do. At least one of imageSize and fileName is set.
struct PatternRequest {
    bool encodingParameter = true;        // the command's own "Encoding"
    std::optional<int> imageSize;         // longer side of the preview images in pixels
    std::optional<std::string> fileName;  // in the local 8-bit encoding; its ending selects a format
    DrawingOptions options;
    std::vector<PatternDescription> patterns;
};

// Throws CommandFailure for the first parameter that does not follow the description above.
PatternRequest readPatternRequest(const Node &parameters);

}  // namespace lmlib64
