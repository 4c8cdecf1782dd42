#include "calibration/output/json_layout.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace calibration {

namespace {

using nlohmann::ordered_json;

std::string plainText(const ordered_json &json) {
    if (json.is_number_float() && !std::isfinite(json.get<double>())) {
        throw std::runtime_error(
            "The calibration has a value that is infinite or undefined, so no files were written.");
    }
    return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

bool isPlainRow(const ordered_json &json) {
    return json.is_array() &&
           std::none_of(json.begin(), json.end(), [](const ordered_json &element) { return element.is_structured(); });
}

void append(const ordered_json &json, size_t depth, std::string &text) {
    if (!json.is_structured()) {
        text += plainText(json);
        return;
    }
    if (isPlainRow(json) || json.empty()) {
        text += json.is_object() ? "{" : "[";
        const char *separator = "";
        for (const ordered_json &element : json) {
            text += separator + plainText(element);
            separator = ", ";
        }
        text += json.is_object() ? "}" : "]";
        return;
    }
    text += json.is_object() ? "{" : "[";
    const char *separator = "\n";
    for (const auto &[key, element] : json.items()) {
        text.append(separator).append(2 * depth + 2, ' ');
        if (json.is_object()) {
            text += plainText(key) + ": ";
        }
        append(element, depth + 1, text);
        separator = ",\n";
    }
    text.append("\n").append(2 * depth, ' ') += json.is_object() ? "}" : "]";
}

}  // namespace

std::string layOut(const ordered_json &json) {
    std::string text;
    append(json, 0, text);
    return text + "\n";
}

}  // namespace calibration
