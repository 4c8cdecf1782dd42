// Makes everyday pictures. They show one to four patterns of all types and both polarities in mild light, tilted by up
// to 60°, with 4 to 40 pixels per square. The patterns are completely visible, or a quarter is hidden. The number of a
// picture determines everything in it.
#pragma once

#include "bench/reader/scene.h"

namespace reader_bench {

Scene makeScene(unsigned number, Marks marks = Marks::Drawn);

}  // namespace reader_bench
