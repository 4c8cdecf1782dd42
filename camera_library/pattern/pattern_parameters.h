// Checks the parameters of "GenerateCalibrationPattern" and turns them into plain values. The table of all
// parameters, their ranges and defaults:
//
//   "Encoding"    boolean, default true; false draws every pattern plain
//   "ImageSize"   integer, 16 to 8000: longer side of the preview images in pixels; over all patterns at
//                 most 256 million pixels, each counted as ImageSize x ImageSize
//   "Filename"    string in the local 8-bit encoding, ends in .pdf or .json, upper or lower case
//   "Patterns"    array of 1 to 64 objects
//
// At least one of "ImageSize" and "Filename" is given. Per pattern, lengths in millimetres:
//
//   "Type"             type of a catalogue plate, "SingleCustom", "Flexible", "Assembly"; absent: the
//                      Halcon-style plate
//   "GridSpacing"      0, or 0.001 to 1000; required but for a catalogue plate, where it must be the plate's own
//   "Thickness"        0 to 100, default 0; of a catalogue plate its own
//   "Polarity"         boolean, default true
//   "GridSize"         two integers, 2 to 200; Flexible only and required there
//   "Offset"           two numbers, -9999 to 9999, default 0; Flexible and Halcon only
//   "AssemblyPattern"  integer, 0 to 17, default 0; Assembly only
//   "Encoding"         boolean, default true; Halcon only
//
// Where neither "Encoding" is false the pattern carries its code, which must be able to hold it: the grid
// spacing of all but Flexible patterns and of plates with "Offset" is a multiple of 0.01 mm, 130 mm at most; so
// is the thickness of catalogue, Single and Halcon patterns; the offset of a Flexible pattern is in half grid
// spacings, to within 0.005 mm, and leaves the pattern in the code's plane; that of a plate is -128 to 127 grid
// spacings. A plate's code holds its offset where "Offset" is given, its grid spacing and thickness otherwise.
//
// A parameter that the table does not have is refused: it is a slip of the pen that would otherwise print a
// wrong target. A grid spacing of 0 is a pattern without extent, allowed only where no file is asked for.
#pragma once

#include "camera_library/pattern/pattern_description.h"
#include "camera_library/tree/node.h"

namespace lmlib64 {

/// Throws CommandFailure for the first parameter that is not as the table says.
PatternRequest readPatternParameters(const Node &parameters);

/// Whether the name ends in `ending` (".pdf"), upper and lower case alike.
bool fileNameEndsIn(const std::string &fileName, std::string_view ending);

}  // namespace lmlib64
