// Makes everyday pictures. Each shows one to four patterns; together, they show all types and both polarities. The
// light is mild. The patterns are tilted by up to 60°, and a square has a side of 4 to 40 pixels. If a picture shows
// only one pattern, a quarter of it may be hidden. Otherwise, all patterns are completely visible. The number of a
// picture determines everything in it, except whether the patterns have their marks (`marks`).
#pragma once

#include "bench/reader/scene.h"

namespace reader_bench {

Scene makeScene(unsigned number, Marks marks = Marks::Drawn);

}  // namespace reader_bench
