// Makes the text of a JSON document that people can read: each member and each array of plain values has its own line.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace calibration {

// Throws std::runtime_error if a number is not finite. Invalid UTF-8 is replaced.
std::string layOut(const nlohmann::ordered_json &json);

}  // namespace calibration
