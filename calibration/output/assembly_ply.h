// Writes the assembly as a mesh in the PLY format, for viewers of 3D models.
#pragma once

#include <string>

#include "calibration/output/assembly.h"

namespace calibration {

// Returns the text of an ASCII file, with lengths in mm. Each corner or mark is a vertex, with the standard deviation
// of its position and the index of its print in the calibration. Every cell of a print's grid that has points at all
// four corners is a face.
std::string assemblyPly(const std::vector<AssemblyPattern> &patterns);

}  // namespace calibration
