// Readings as a JSON document, described in docs/reading.md.
#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

nlohmann::ordered_json toJson(const PatternReading &reading);

}  // namespace pattern_reader
