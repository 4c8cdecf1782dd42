#include "tests/scripted_lmlib64/library_state.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace scripted_lmlib64 {

namespace {

// The nodes below /Path name files that need not exist. The plates differ in every value, so that a test notices if two
// plates are confused.
const char *const defaultScript = R"({
  "nodes": {
    "/Path/Manual": "/scripted/manual",
    "/Path/Application/LmView": "/scripted/bin/LmView"
  },
  "commands": {
    "GetModelInfo": {"CalTabs": [
      {"Name": "A", "Type": "PlateA", "GridSpacing": 6.5, "Thickness": 1.5},
      {"Name": "B", "Type": "PlateB", "GridSpacing": 12.25, "Thickness": 2.5},
      {"Name": "C", "Type": "PlateC", "GridSpacing": 24.75, "Thickness": 3.5}
    ]}
  }
})";

const Binary defaultImage{4, 4, 1, {0, 16, 32, 48, 64, 80, 96, 112, 128, 144, 160, 176, 192, 208, 224, 240}};

bool matches(const char *pattern, const char *text) {
    if (*pattern == '*') {
        return matches(pattern + 1, text) || (*text != '\0' && matches(pattern, text + 1));
    }
    return *pattern == *text && (*pattern == '\0' || matches(pattern + 1, text + 1));
}

std::string lineOf(const Call &call) {
    std::string line = call.function;
    for (const std::string &part : {call.path, call.value}) {
        line += part.empty() ? "" : " " + part;
    }
    return line + (call.hasResult ? "" : " [no result]");
}

}  // namespace

LibraryState &library() {
    static LibraryState state = [] {
        LibraryState made;
        made.applyScript(Json::parse(defaultScript));
        made.image = defaultImage;
        if (const char *fileName = std::getenv("LMLIB64_SCRIPT")) {
            std::ifstream file(fileName);
            made.applyScript(Json::parse(file));
        }
        return made;
    }();
    return state;
}

// An index such as "\3" becomes "3" in the JSON pointer.
Json::json_pointer pointerTo(const std::string &path) {
    std::string pointer = path;
    for (std::size_t i = pointer.find("/\\"); i != std::string::npos; i = pointer.find("/\\", i)) {
        pointer.erase(i + 1, 1);
    }
    return Json::json_pointer(pointer);
}

const Json &LibraryState::at(const std::string &path) const {
    return nodes.at(pointerTo(path));
}

void LibraryState::record(const Call &call) {
    static const char *const fileName = std::getenv("LMLIB64_RECORD");
    calls.push_back(call);
    if (fileName != nullptr) {
        std::ofstream(fileName, std::ios::app) << lineOf(call) + "\n";
    }
    if (observer) {
        observer(call);
    }
}

std::optional<std::int32_t> LibraryState::scriptedResult(const Call &call) {
    std::optional<std::int32_t> code;
    for (ResultRule &rule : rules) {
        if (!matches(rule.functionPattern.c_str(), call.function.c_str()) ||
            !matches(rule.pathPattern.c_str(), call.path.c_str())) {
            continue;
        }
        ++rule.matchCount;
        if (rule.occurrence == 0 || rule.occurrence == rule.matchCount) {
            code = rule.code;
        }
    }
    return code;
}

void LibraryState::finishCommand(const std::string &commandPath) {
    const std::string slot = commandPath.substr(0, commandPath.rfind('/'));
    const std::string name = at(commandPath).get<std::string>();
    Json &result = nodes[pointerTo(slot + "/Result")];
    result = results.count(name) != 0 ? results[name] : Json::object();
    const Json parameters = at(slot).value("Parameters", Json::object());
    if (!result.contains("ErrorSymbol") && parameters.contains("ImageSize")) {
        for (std::size_t i = 0; i < std::max<std::size_t>(parameters.value("Patterns", Json()).size(), 1); ++i) {
            setBinary(slot + "/Result/Patterns/\\" + std::to_string(i), image);
        }
    }
    nodes[pointerTo(commandPath)] = nullptr;
}

void LibraryState::applyScript(const Json &script) {
    const Json givenNodes = script.value("nodes", Json::object());
    for (const auto &[path, value] : givenNodes.items()) {
        nodes[pointerTo(path)] = value;
    }
    const Json givenResults = script.value("commands", Json::object());
    for (const auto &[name, result] : givenResults.items()) {
        results[name] = result;
    }
    const Json givenCodes = script.value("codes", Json::object());
    for (const auto &[function, code] : givenCodes.items()) {
        rules.push_back({function, "*", code, 0, 0});
    }
}

void reset() {
    library() = LibraryState();
}

void loadDefaultScript() {
    reset();
    library().applyScript(Json::parse(defaultScript));
    library().image = defaultImage;
}

std::vector<Call> calls() {
    return library().calls;
}

std::vector<std::string> callLines() {
    std::vector<std::string> lines;
    for (const Call &call : library().calls) {
        lines.push_back(lineOf(call));
    }
    return lines;
}

void clearCalls() {
    library().calls.clear();
}

void observeCalls(const std::function<void(const Call &)> &observer) {
    library().observer = observer;
}

void setNode(const std::string &path, const std::string &json) {
    library().nodes[pointerTo(path)] = Json::parse(json);
}

void setBinary(const std::string &path, const Binary &binary) {
    library().nodes[pointerTo(path)] = Json::binary({}, library().binaries.size());
    library().binaries.push_back(binary);
}

std::string nodeJson(const std::string &path) {
    return library().at(path).dump();
}

void setResult(const std::string &functionPattern, const std::string &pathPattern, std::int32_t code,
               std::int32_t occurrence) {
    library().rules.push_back({functionPattern, pathPattern, code, occurrence, 0});
}

void setCommandResult(const std::string &name, const std::string &json) {
    library().results[name] = Json::parse(json);
}

void failCommand(const std::string &name, const std::string &symbol, const std::string &text) {
    library().results[name] = {{"ErrorSymbol", symbol}, {"ErrorText", text}, {"Execute", {{"Command", name}}}};
}

void setImage(const Binary &image) {
    library().image = image;
}

}  // namespace scripted_lmlib64
