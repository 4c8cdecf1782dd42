// The text of a JSON document, laid out for people: one line for every member and for every array of plain values.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace calibration {

// Throws std::runtime_error if a number is not finite. Invalid UTF-8 is replaced.
std::string layOut(const nlohmann::ordered_json &json);

}  // namespace calibration
