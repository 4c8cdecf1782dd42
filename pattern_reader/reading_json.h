// Readings as a JSON document, described in docs/reading.md.
#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

// objectPoints: of the corners, in millimetres, one for each; or null if they are not known.
nlohmann::ordered_json toJson(const PatternReading &reading, const std::vector<cv::Point3d> *objectPoints = nullptr);

}  // namespace pattern_reader
