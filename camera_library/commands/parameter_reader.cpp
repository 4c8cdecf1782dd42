#include "camera_library/commands/parameter_reader.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "camera_library/commands/command.h"
#include "camera_library/pattern/number_text.h"

namespace lmlib64 {

namespace {

// Returns the text in quotes, for an error message of one line. A client's text can have any length and content, so
// only its beginning is shown, and control characters become question marks.
std::string quoted(const std::string &text) {
    constexpr std::size_t longestShown = 100;
    std::string shown = text.substr(0, longestShown);
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, '?');
    return '"' + shown + (text.size() > longestShown ? "...\"" : "\"");
}

std::string describe(const Node &node) {
    switch (node.type()) {
        case LmLibTypeNumber:
            return numberText(std::get<double>(node.value));
        case LmLibTypeString:
            return quoted(std::get<std::string>(node.value));
        case LmLibTypeBoolean:
            return std::get<bool>(node.value) ? "true" : "false";
        case LmLibTypeObject:
            return "an object";
        case LmLibTypeArray: {
            const auto &elements = std::get<NodeArray>(node.value);
            std::string text = "an array of " + std::to_string(elements.size());
            if (elements.size() == 2 && elements[0].type() < LmLibTypeObject && elements[1].type() < LmLibTypeObject) {
                text = "[" + describe(elements[0]) + ", " + describe(elements[1]) + "]";
            }
            return text;
        }
        case LmLibTypeBinary:
            return "binary data";
        default:
            return "null";
    }
}

std::string rangeText(NumberRange range) {
    const std::string unit = *range.unit == '\0' ? "" : std::string(" ") + range.unit;
    return " from " + numberText(range.minimum) + " to " + numberText(range.maximum) + unit;
}

std::optional<double> numberWithin(const Node &node, NumberRange range) {
    const auto *number = std::get_if<double>(&node.value);
    // The comparisons are written so that NaN is outside every range.
    const bool isInside = number != nullptr && *number >= range.minimum && *number <= range.maximum;
    return isInside ? std::optional(*number) : std::nullopt;
}

std::optional<int> integerWithin(const Node &node, NumberRange range) {
    const std::optional<double> number = numberWithin(node, range);
    return number && *number == std::floor(*number) ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

// Returns both elements of an array of two; empty if the node is anything else or an element is not allowed.
template <typename Element, typename Convert>
std::optional<std::array<Element, 2>> pairWithin(const Node &node, NumberRange range, Convert convert) {
    const auto *elements = std::get_if<NodeArray>(&node.value);
    if (elements == nullptr || elements->size() != 2) {
        return std::nullopt;
    }
    const std::optional<Element> x = convert((*elements)[0], range);
    const std::optional<Element> y = convert((*elements)[1], range);
    return x && y ? std::optional(std::array<Element, 2>{*x, *y}) : std::nullopt;
}

}  // namespace

std::string numberDescription(NumberRange range) {
    return "a number" + rangeText(range);
}

std::string integerDescription(NumberRange range) {
    return "an integer" + rangeText(range);
}

ParameterReader::ParameterReader(const Node &object, std::string placeOfObject)
    : node(object), place(std::move(placeOfObject)) {
    if (node.type() != LmLibTypeObject && node.type() != LmLibTypeNull) {
        throw CommandFailure{"InvalidParameter", "Parameter " + (place.empty() ? "\"Parameters\"" : place) + " is " +
                                                     describe(node) + "; it must be an object."};
    }
}

std::string ParameterReader::fullName(std::string_view name) const {
    return (place.empty() ? "" : place + "/") + '"' + std::string(name) + '"';
}

void ParameterReader::failMissing(std::string_view name, const std::string &required) const {
    throw CommandFailure{"InvalidParameter",
                         "Parameter " + fullName(name) + " is missing; it must be " + required + "."};
}

void ParameterReader::failValue(std::string_view name, const std::string &required) const {
    throw CommandFailure{"InvalidParameter", "Parameter " + fullName(name) + " is " + describe(*node.find(name)) +
                                                 "; it must be " + required + "."};
}

void ParameterReader::allowOnly(const std::vector<std::string_view> &names, std::string_view what) const {
    const auto *children = std::get_if<NodeObject>(&node.value);
    if (children == nullptr) {
        return;
    }
    for (const auto &child : *children) {
        if (std::find(names.begin(), names.end(), child.first) != names.end()) {
            continue;
        }
        std::string list;
        for (const std::string_view name : names) {
            list += (list.empty() ? "\"" : ", \"") + std::string(name) + '"';
        }
        throw CommandFailure{"InvalidParameter", "Parameter " + fullName(child.first) + " is " +
                                                     describe(child.second) + ", but " + std::string(what) +
                                                     " has no such parameter. The allowed parameters are " + list +
                                                     "."};
    }
}

std::optional<bool> ParameterReader::boolean(std::string_view name) const {
    const Node *child = node.find(name);
    if (child == nullptr) {
        return std::nullopt;
    }
    const auto *value = std::get_if<bool>(&child->value);
    if (value == nullptr) {
        failValue(name, "true or false");
    }
    return *value;
}

std::optional<std::string> ParameterReader::text(std::string_view name) const {
    const Node *child = node.find(name);
    if (child == nullptr) {
        return std::nullopt;
    }
    const auto *value = std::get_if<std::string>(&child->value);
    if (value == nullptr) {
        failValue(name, "a string");
    }
    return *value;
}

std::optional<double> ParameterReader::number(std::string_view name, NumberRange range) const {
    const Node *child = node.find(name);
    if (child == nullptr) {
        return std::nullopt;
    }
    const std::optional<double> value = numberWithin(*child, range);
    if (!value) {
        failValue(name, numberDescription(range));
    }
    return value;
}

std::optional<int> ParameterReader::integer(std::string_view name, NumberRange range) const {
    const Node *child = node.find(name);
    if (child == nullptr) {
        return std::nullopt;
    }
    const std::optional<int> value = integerWithin(*child, range);
    if (!value) {
        failValue(name, integerDescription(range));
    }
    return value;
}

std::optional<std::array<double, 2>> ParameterReader::numberPair(std::string_view name, NumberRange range) const {
    const Node *child = node.find(name);
    if (child == nullptr) {
        return std::nullopt;
    }
    const auto value = pairWithin<double>(*child, range, numberWithin);
    if (!value) {
        failValue(name, "an array of two elements, each " + numberDescription(range));
    }
    return value;
}

std::optional<std::array<int, 2>> ParameterReader::integerPair(std::string_view name, NumberRange range) const {
    const Node *child = node.find(name);
    if (child == nullptr) {
        return std::nullopt;
    }
    const auto value = pairWithin<int>(*child, range, integerWithin);
    if (!value) {
        failValue(name, "an array of two elements, each " + integerDescription(range));
    }
    return value;
}

}  // namespace lmlib64
