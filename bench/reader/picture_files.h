// Writes pictures of the benchmark, and the truth about them, to files for inspection.
#pragma once

#include <string>

#include "bench/reader/scene.h"

namespace reader_bench {

// Writes NUMBER.png and NUMBER.json to the folder. For every pattern, the JSON has its kind, tile and size. It also has
// the corners or marks that the picture shows, in the same form as a reading ("lattice" and "image"). Throws
// std::runtime_error if a file cannot be written.
void savePicture(const std::string &folder, unsigned number, const Scene &scene);

}  // namespace reader_bench
