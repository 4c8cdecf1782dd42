// Writes readings as JSON, in the form that docs/reading.md describes.
#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "pattern_reader/pattern_reader.h"

namespace pattern_reader {

// `objectPoints` has one point for each corner, in millimetres. It is null if the points are not known.
nlohmann::ordered_json toJson(const PatternReading &reading, const std::vector<cv::Point3d> *objectPoints = nullptr);

}  // namespace pattern_reader
