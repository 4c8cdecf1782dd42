// Writes pictures of the benchmark, and what is true of them, for a closer look.
#pragma once

#include <string>

#include "bench/reader/scene.h"

namespace reader_bench {

// NUMBER.png and NUMBER.json in the folder: for every pattern its kind, tile, size, and the corners or marks that the
// picture shows, in the form of a reading's ("lattice" and "image"). Throws std::runtime_error if a file cannot be
// written.
void savePicture(const std::string &folder, unsigned number, const Scene &scene);

}  // namespace reader_bench
