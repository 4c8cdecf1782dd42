// Writes the assembly as a mesh in the PLY format, for viewers of 3D models.
#pragma once

#include <string>

#include "calibration/output/assembly.h"

namespace calibration {

// Returns the text of an ASCII file, with lengths in mm. Each corner or mark is a vertex, with the standard deviation
// of its position and the index of its print in the calibration. A cell of a print's grid is a face if there
// is a vertex at each of the cell's four corners.
std::string assemblyPly(const std::vector<AssemblyPattern> &patterns);

}  // namespace calibration
