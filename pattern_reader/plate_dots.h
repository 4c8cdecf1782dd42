// Reads the dots between a plate's marks. The dots carry the information block.
#pragma once

#include "pattern_reader/block_reader.h"
#include "pattern_reader/plate_view.h"

namespace pattern_reader {

SeenBlock readDots(const PlateView &view);

}  // namespace pattern_reader
