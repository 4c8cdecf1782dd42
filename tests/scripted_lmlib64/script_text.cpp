// Reads scripts from JSON texts, and contains the default script.
#include "tests/scripted_lmlib64/library_state.h"

namespace scripted_lmlib64 {

namespace {

// The nodes below /Path name files that need not exist. The plates differ in every value, so that tests notice if one
// is taken for another.
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
    ]}}
  }
})";

CommandScript commandScriptOf(const Json &text) {
    CommandScript script;
    script.resultJson = text.value("result", Json::object()).dump();
    script.errorSymbol = text.value("errorSymbol", "");
    script.errorText = text.value("errorText", "");
    return script;
}

}  // namespace

void applyScript(LibraryState &state, const std::string &json) {
    const Json script = Json::parse(json);
    const Json nodes = script.value("nodes", Json::object());
    for (const auto &[path, value] : nodes.items()) {
        state.tree.set(path, value);
    }
    for (const Json &rule : script.value("results", Json::array())) {
        state.addResult(rule.at("function"), rule.value("path", "*"), rule.at("code"), 0);
    }
    const Json commands = script.value("commands", Json::object());
    for (const auto &[name, command] : commands.items()) {
        state.commands[name] = {commandScriptOf(command)};
    }
}

void applyDefaultScript(LibraryState &state) {
    applyScript(state, defaultScript);
    CommandScript draw;
    draw.image = Binary{4, 4, 1, {0, 16, 32, 48, 64, 80, 96, 112, 128, 144, 160, 176, 192, 208, 224, 240}};
    state.commands["GenerateCalibrationPattern"] = {draw};
}

}  // namespace scripted_lmlib64
