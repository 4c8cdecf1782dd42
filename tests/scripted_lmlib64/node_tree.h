// The nodes of the scripted library: a JSON document addressed by the library's paths, with binary leaves. It knows
// nothing of commands, recording or threads. It does not check for paths that the real library refuses.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace scripted_lmlib64 {

using Json = nlohmann::ordered_json;

// Thrown for a failure that the interface reports as this result code. It also reports the JSON library's exceptions.
struct Failure {
    std::int32_t code;
};

// Throws Json::out_of_range if there is no such node, and Json::type_error if the node has another type.
class NodeTree {
public:
    const Json &at(const std::string &path) const { return root.at(pointerTo(path)); }
    bool contains(const std::string &path) const { return root.contains(pointerTo(path)); }
    const Binary &binaryAt(const std::string &path) const { return binaries.at(at(path).get_binary().subtype()); }
    // An LmLibType.
    std::int32_t typeAt(const std::string &path) const;

    // Both create the objects and arrays that are missing along the path.
    void set(const std::string &path, const Json &value) { root[pointerTo(path)] = value; }
    void setBinary(const std::string &path, const Binary &binary);
    void erase(const std::string &path);

    static std::string nameOf(const std::string &path);

private:
    static Json::json_pointer pointerTo(const std::string &path);

    Json root = Json::object();
    // The subtype of a binary leaf is its index in this list.
    std::vector<Binary> binaries;
};

}  // namespace scripted_lmlib64
