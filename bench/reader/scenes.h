// Makes everyday pictures. They show one to four patterns of all types and both polarities. The light is mild. The
// patterns are tilted by up to 60°, and a square has a side of 4 to 40 pixels. The patterns are completely visible, or
// a quarter is hidden. The number of a picture determines everything in it.
#pragma once

#include "bench/reader/scene.h"

namespace reader_bench {

Scene makeScene(unsigned number, Marks marks = Marks::Drawn);

}  // namespace reader_bench
