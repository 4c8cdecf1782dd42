// Makes everyday pictures. Each shows one to four patterns; together, they show all types and both polarities. The
// light is mild. The patterns are tilted by up to 60°, and a square has a side of 4 to 40 pixels. If a picture shows
// only one pattern, a quarter of the pattern may be hidden. Otherwise, all patterns are completely visible. The number
// of a picture determines everything in it except the marks on the squares of checkerboards. `marks` says whether the
// marks are drawn. It has no effect on a picture whose number ends in 7. These pictures are made to show several
// patterns, and their marks are always drawn.
#pragma once

#include "bench/reader/scene.h"

namespace reader_bench {

Scene makeScene(unsigned number, Marks marks = Marks::Drawn);

}  // namespace reader_bench
