// The functions with which a test in the same process scripts and inspects the library.
#include "tests/scripted_lmlib64/library_state.h"

namespace scripted_lmlib64 {

namespace {

template <typename Action>
auto locked(Action action) {
    LibraryState &state = LibraryState::instance();
    const std::lock_guard<std::mutex> lock(state.mutex);
    return action(state);
}

}  // namespace

void reset() {
    locked([](LibraryState &state) { state.reset(); });
}

void loadDefaultScript() {
    locked([](LibraryState &state) {
        state.reset();
        applyDefaultScript(state);
    });
}

void loadScript(const std::string &json) {
    locked([&](LibraryState &state) { applyScript(state, json); });
}

std::vector<Call> calls() {
    return locked([](const LibraryState &state) { return state.calls; });
}

std::vector<std::string> callLines() {
    std::vector<std::string> lines;
    for (const Call &call : calls()) {
        lines.push_back(lineOf(call));
    }
    return lines;
}

void clearCalls() {
    locked([](LibraryState &state) { state.calls.clear(); });
}

void observeCalls(const std::function<void(const Call &)> &observer) {
    locked([&](LibraryState &state) { state.observer = observer; });
}

void setNode(const std::string &path, const std::string &json) {
    locked([&](LibraryState &state) { state.tree.set(path, Json::parse(json)); });
}

void setBinary(const std::string &path, const Binary &binary) {
    locked([&](LibraryState &state) { state.tree.setBinary(path, binary); });
}

bool hasNode(const std::string &path) {
    return locked([&](const LibraryState &state) { return state.tree.contains(path); });
}

std::string nodeJson(const std::string &path) {
    return locked([&](const LibraryState &state) {
        return state.tree.contains(path) ? state.tree.at(path).dump() : std::string();
    });
}

void setResult(const std::string &function, const std::string &pathPattern, std::int32_t code,
               std::int32_t occurrence) {
    locked([&](LibraryState &state) { state.addResult(function, pathPattern, code, occurrence); });
}

void setCommand(const std::string &name, const std::vector<CommandScript> &runs) {
    locked([&](LibraryState &state) { state.commands[name] = runs; });
}

}  // namespace scripted_lmlib64
