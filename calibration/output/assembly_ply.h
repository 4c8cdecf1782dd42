// The assembly as a mesh in the PLY format, to be looked at.
#pragma once

#include <string>

#include "calibration/output/assembly.h"

namespace calibration {

// Text, in mm. Every corner is a vertex with its standard deviation and its print's number in the calibration, and four
// neighbouring corners make a face.
std::string assemblyPly(const std::vector<AssemblyPattern> &patterns);

}  // namespace calibration
