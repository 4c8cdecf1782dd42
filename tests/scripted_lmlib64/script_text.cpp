// Scripts as JSON texts, the default one included.
#include <stdexcept>

#include "tests/scripted_lmlib64/library_state.h"

namespace scripted_lmlib64 {

namespace {

// The nodes below /Path name files that need not exist. The plates differ in every value, so that one taken for
// another is noticed.
const char *const defaultScript = R"({
  "nodes": {
    "/Execute": {},
    "/Path/Manual": "/scripted/manual",
    "/Path/Application/LmView": "/scripted/bin/LmView"
  },
  "commands": {
    "GetModelInfo": {"result": {"CalTabs": [
      {"Name": "A", "Type": "PlateA", "GridSpacing": 6.5, "Thickness": 1.5},
      {"Name": "B", "Type": "PlateB", "GridSpacing": 12.25, "Thickness": 2.5},
      {"Name": "C", "Type": "PlateC", "GridSpacing": 24.75, "Thickness": 3.5}
    ]}},
    "GenerateCalibrationPattern": {"image": {"width": 4, "height": 4, "bytes": [
        0,  16,  32,  48,
       64,  80,  96, 112,
      128, 144, 160, 176,
      192, 208, 224, 240
    ]}}
  }
})";

Binary binaryOf(const Json &text) {
    Binary binary;
    binary.width = text.value("width", binary.width);
    binary.height = text.value("height", binary.height);
    binary.channelCount = text.value("channelCount", binary.channelCount);
    binary.bytes = text.value("bytes", binary.bytes);
    return binary;
}

CommandEnd commandEndOf(const std::string &text) {
    if (text == "atOnce") {
        return CommandEnd::AtOnce;
    }
    if (text == "whenWaitedFor") {
        return CommandEnd::WhenWaitedFor;
    }
    if (text == "never") {
        return CommandEnd::Never;
    }
    throw std::invalid_argument("no such end of a command: " + text);
}

CommandScript commandScriptOf(const Json &text) {
    CommandScript script;
    script.resultJson = text.value("result", Json::object()).dump();
    script.errorSymbol = text.value("errorSymbol", "");
    script.errorText = text.value("errorText", "");
    script.end = commandEndOf(text.value("end", "atOnce"));
    if (text.contains("image")) {
        script.image = binaryOf(text.at("image"));
    }
    return script;
}

std::vector<CommandScript> commandRunsOf(const Json &text) {
    std::vector<CommandScript> runs;
    if (!text.is_array()) {
        runs.push_back(commandScriptOf(text));
        return runs;
    }
    for (const Json &run : text) {
        runs.push_back(commandScriptOf(run));
    }
    return runs;
}

}  // namespace

void applyScript(LibraryState &state, const std::string &json) {
    const Json script = Json::parse(json);
    const Json nodes = script.value("nodes", Json::object());
    for (const auto &[path, value] : nodes.items()) {
        try {
            state.tree.set(path, value);
        } catch (const Failure &) {
            throw std::invalid_argument("no node can be put at " + path);
        }
    }
    for (const Json &rule : script.value("results", Json::array())) {
        state.addResult(rule.at("function"), rule.value("path", "*"), rule.at("code"), rule.value("occurrence", 0));
    }
    const Json commands = script.value("commands", Json::object());
    for (const auto &[name, runs] : commands.items()) {
        state.commands[name] = commandRunsOf(runs);
    }
}

void applyDefaultScript(LibraryState &state) {
    applyScript(state, defaultScript);
}

}  // namespace scripted_lmlib64
