// Writes pictures of the benchmark, and the truth about them, to files for inspection.
#pragma once

#include <string>

#include "bench/reader/scene.h"

namespace reader_bench {

// Writes NUMBER.png and NUMBER.json to the folder. The JSON tells whether the picture is mirrored. For every pattern,
// it has the kind, the tile, the size in squares, the side of a square in pixels, the tilt in degrees, and the corners
// or marks that the picture shows. Each of these points has its lattice coordinates ("lattice") and its true position
// in pixels ("image"). Throws std::runtime_error if a file cannot be written.
void savePicture(const std::string &folder, unsigned number, const Scene &scene);

}  // namespace reader_bench
