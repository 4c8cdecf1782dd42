// Makes everyday pictures: one to four patterns in mild light, of all types and both polarities, completely
// visible or with a quarter hidden, tilted by up to 60°, with 4 to 40 pixels per square. The number of a picture
// determines everything in it.
#pragma once

#include "bench/reader/scene.h"

namespace reader_bench {

Scene makeScene(unsigned number, Marks marks = Marks::Drawn);

}  // namespace reader_bench
