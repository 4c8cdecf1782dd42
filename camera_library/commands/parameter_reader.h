// Reads values from a command's parameter object and checks them. A parameter that is absent gives an empty optional.
// If a parameter or a value is not allowed, a function throws CommandFailure with the symbol "InvalidParameter". The
// failure's text is one sentence that names the parameter, its value and the allowed values.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "camera_library/pattern/pattern_parameter.h"
#include "camera_library/tree/node.h"

namespace lmlib64 {

// Reads one object of parameters. The reader keeps a reference to the object's node, so the node must outlive the
// reader.
class ParameterReader {
public:
    // `place` says where the object is in the command's parameters, such as "Patterns"[0]. It is empty if the object is
    // all of the parameters. A null node counts as an object without children.
    ParameterReader(const Node &object, std::string place);

    // Fails if the object has a child whose name is not in `names`. `what` tells the user which pattern or command has
    // these parameters.
    void allowOnly(const std::vector<std::string_view> &names, std::string_view what) const;

    bool has(std::string_view name) const { return node.find(name) != nullptr; }
    const Node *find(std::string_view name) const { return node.find(name); }

    std::optional<bool> boolean(std::string_view name) const;
    std::optional<std::string> text(std::string_view name) const;
    std::optional<double> number(std::string_view name, NumberRange range) const;
    std::optional<int> integer(std::string_view name, NumberRange range) const;
    std::optional<std::array<double, 2>> numberPair(std::string_view name, NumberRange range) const;
    std::optional<std::array<int, 2>> integerPair(std::string_view name, NumberRange range) const;

    // Both functions throw the failure: failMissing for a parameter that is absent, failValue for one that is present
    // but has a value that is not allowed. `required` describes the allowed values, such as "a number from 0 to 1000
    // mm".
    [[noreturn]] void failMissing(std::string_view name, const std::string &required) const;
    [[noreturn]] void failValue(std::string_view name, const std::string &required) const;

private:
    std::string fullName(std::string_view name) const;

    const Node &node;
    std::string place;
};

// Return the allowed values in words, such as "a number from 0 to 1000 mm" or "an integer from 2 to 200".
std::string numberDescription(NumberRange range);
std::string integerDescription(NumberRange range);

}  // namespace lmlib64
