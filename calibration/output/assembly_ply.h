// Writes the assembly as a mesh in the PLY format, for viewers of 3D models.
#pragma once

#include <string>

#include "calibration/output/assembly.h"

namespace calibration {

// Returns the text of an ASCII file, with lengths in mm. Each corner is a vertex with its standard deviation and the
// index of its print in the calibration. Four neighbouring corners make a face.
std::string assemblyPly(const std::vector<AssemblyPattern> &patterns);

}  // namespace calibration
