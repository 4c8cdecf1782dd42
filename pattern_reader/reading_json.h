// Writes readings as JSON, in the form that docs/reading.md describes.
#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

// `objectPoints` has one point in millimetres for each corner; null if these are not known.
nlohmann::ordered_json toJson(const PatternReading &reading, const std::vector<cv::Point3d> *objectPoints = nullptr);

}  // namespace pattern_reader
