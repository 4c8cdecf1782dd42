// The nodes behind the scripted library: a JSON document addressed by the library's paths, with binary leaves.
// Knows nothing of commands, recording or threads. It takes the paths that the library takes, and does not judge the
// others.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace scripted_lmlib64 {

using Json = nlohmann::ordered_json;

// Thrown for what the interface reports as a result code, beside the JSON library's own exceptions.
struct Failure {
    std::int32_t code;
};

// Json::out_of_range where there is no such node, Json::type_error where it is of another type.
class NodeTree {
public:
    const Json &at(const std::string &path) const { return root.at(pointerTo(path)); }
    bool contains(const std::string &path) const { return root.contains(pointerTo(path)); }
    const Binary &binaryAt(const std::string &path) const { return binaries.at(at(path).get_binary().subtype()); }
    // An LmLibType.
    std::int32_t typeAt(const std::string &path) const;

    // Both make the objects and arrays on the way.
    void set(const std::string &path, const Json &value) { root[pointerTo(path)] = value; }
    void setBinary(const std::string &path, const Binary &binary);
    void erase(const std::string &path);

    static std::string nameOf(const std::string &path);

private:
    static Json::json_pointer pointerTo(const std::string &path);

    Json root = Json::object();
    // A binary leaf holds its index here as its subtype.
    std::vector<Binary> binaries;
};

}  // namespace scripted_lmlib64
