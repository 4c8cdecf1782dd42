// Runs "GenerateCalibrationPattern" as the library does, from parameters written as JSON.
#pragma once

#include <stdexcept>
#include <string>

#include "camera_library/commands/command.h"
#include "camera_library/tree/json_text.h"

namespace lmlib64 {

Node generateCalibrationPattern(const Node &parameters);

inline Node nodeFromJson(const std::string &json) {
    Node node;
    if (parseJson(json, LMLIB_MAXIMUM_DEPTH, node) != LmLibResultOperationSucceeded) {
        throw std::invalid_argument("not valid JSON: " + json);
    }
    return node;
}

// Runs the command with these parameters. Returns "" if it succeeds, otherwise "Symbol: text".
inline std::string outcomeOf(const Node &parameters) {
    try {
        generateCalibrationPattern(parameters);
        return "";
    } catch (const CommandFailure &failure) {
        return failure.symbol + ": " + failure.text;
    }
}

// Writes patterns to a file. `patterns` are the elements of a JSON array. Returns the same as outcomeOf.
inline std::string save(const std::string &patterns, const std::string &fileName) {
    Node parameters = nodeFromJson(R"({"Patterns": [)" + patterns + "]}");
    std::get<NodeObject>(parameters.value)["Filename"] = fileName;
    return outcomeOf(parameters);
}

// Returns the preview of the first pattern. `patterns` are the elements of a JSON array.
inline Binary preview(const std::string &patterns, int imageSize, bool encoding = true) {
    Node parameters = nodeFromJson(R"({"Patterns": [)" + patterns + "]}");
    std::get<NodeObject>(parameters.value)["ImageSize"] = imageSize;
    std::get<NodeObject>(parameters.value)["Encoding"] = encoding;
    const Node result = generateCalibrationPattern(parameters);
    return *std::get<NodeBinary>(std::get<NodeArray>(result.find("Patterns")->value).at(0).value);
}

}  // namespace lmlib64
