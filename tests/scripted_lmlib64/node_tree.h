// The nodes behind the scripted library: a JSON document addressed by the library's paths, with binary leaves.
// Knows nothing of commands, recording or threads.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace scripted_lmlib64 {

using Json = nlohmann::ordered_json;

// Thrown for what the interface reports as a result code.
struct Failure {
    std::int32_t code;
};

class NodeTree {
public:
    // Failure where there is no such node or no such path.
    const Json &at(const std::string &path) const;
    bool contains(const std::string &path) const;
    const Binary &binaryAt(const std::string &path) const;
    // An LmLibType.
    std::int32_t typeAt(const std::string &path) const;
    static std::string nameOf(const std::string &path);

    // Both make the objects and arrays on the way; after a Failure the tree is as it was.
    void set(const std::string &path, const Json &value);
    void setBinary(const std::string &path, const Binary &binary);
    void erase(const std::string &path);

private:
    Json root = Json::object();
    // A binary leaf holds its index here as its subtype.
    std::vector<Binary> binaries;
};

}  // namespace scripted_lmlib64
