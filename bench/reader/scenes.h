// Everyday pictures: one to four patterns in mild light, of all types and both polarities, whole or with a quarter
// hidden, tilts to 60°, 4 to 40 pixels per square. A number fixes a picture and everything that is true of it.
#pragma once

#include "bench/reader/scene.h"

namespace reader_bench {

Scene makeScene(unsigned number, Marks marks = Marks::Drawn);

}  // namespace reader_bench
