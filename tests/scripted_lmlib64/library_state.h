// The state of the scripted library, and how a command runs in it. Each process has one state.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace scripted_lmlib64 {

using Json = nlohmann::ordered_json;

// The parameters of one call of setResult(). `matchCount` is the number of library calls that have matched both
// patterns since then.
struct ResultRule {
    std::string functionPattern;
    std::string pathPattern;
    std::int32_t code;
    std::int32_t occurrence;
    std::int32_t matchCount;
};

struct LibraryState {
    // Throws Json::out_of_range if there is no such node.
    const Json &at(const std::string &path) const;
    const Binary &binaryAt(const std::string &path) const { return binaries.at(at(path).get_binary().subtype()); }
    void record(const Call &call);
    // Returns the code of the result rule that applies to this call; empty if no rule does.
    std::optional<std::int32_t> scriptedResult(const Call &call);
    // Sets "Command" to null and fills the slot's "Result".
    void finishCommand(const std::string &commandPath);
    void applyScript(const Json &script);

    Json nodes = {{"Execute", Json::object()}};
    // The subtype of a binary leaf is its index in this list.
    std::vector<Binary> binaries;
    std::vector<Call> calls;
    std::function<void(const Call &)> observer;
    std::map<std::string, Json> results;  // by command
    Binary image;
    std::vector<ResultRule> rules;
    std::int32_t lastUniqueNumber = 0;
};

// The state of the process. It starts with the default script. If LMLIB64_SCRIPT names a script, that script is applied
// over the default one.
LibraryState &library();
// Converts a path of the library to a JSON pointer.
Json::json_pointer pointerTo(const std::string &path);

}  // namespace scripted_lmlib64
