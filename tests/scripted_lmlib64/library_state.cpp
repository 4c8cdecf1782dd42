#include "tests/scripted_lmlib64/library_state.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <utility>

namespace scripted_lmlib64 {

namespace {

std::string environmentText(const char *name) {
    const char *text = std::getenv(name);
    return text == nullptr ? std::string() : std::string(text);
}

void appendLine(const std::string &fileName, const std::string &line) {
    if (std::FILE *file = std::fopen(fileName.c_str(), "ab")) {
        std::fputs((line + "\n").c_str(), file);
        std::fclose(file);
    }
}

bool matches(const char *pattern, const char *text) {
    if (*pattern == '*') {
        return matches(pattern + 1, text) || (*text != '\0' && matches(pattern, text + 1));
    }
    return *pattern == *text && (*pattern == '\0' || matches(pattern + 1, text + 1));
}

// The slot whose "Command" this path is; empty for any other path.
std::string slotOfCommand(const std::string &path) {
    const std::string parent = "/Execute/";
    const std::string leaf = "/Command";
    const std::size_t slotEnd = path.find('/', parent.size());
    const bool isCommand =
        path.compare(0, parent.size(), parent) == 0 && slotEnd != std::string::npos && path.substr(slotEnd) == leaf;
    return isCommand ? path.substr(0, slotEnd) : std::string();
}

}  // namespace

std::string lineOf(const Call &call) {
    std::string line = call.function;
    for (const std::string &part : {call.path, call.value}) {
        line += part.empty() ? "" : " " + part;
    }
    line += call.hasResult ? "" : " [no result]";
    for (std::size_t i = line.find('\n'); i != std::string::npos; i = line.find('\n', i)) {
        line.replace(i, 1, "\\n");
    }
    return line;
}

LibraryState &LibraryState::instance() {
    static LibraryState state;
    static const bool isReady = [] {
        state.recordFile = environmentText("LMLIB64_RECORD");
        applyDefaultScript(state);
        const std::string scriptFile = environmentText("LMLIB64_SCRIPT");
        if (!scriptFile.empty()) {
            std::ifstream file(scriptFile, std::ios::binary);
            try {
                applyScript(state, std::string(std::istreambuf_iterator<char>(file), {}));
            } catch (const std::exception &error) {
                std::fprintf(stderr, "%s: %s\n", scriptFile.c_str(), error.what());
                std::abort();  // A test must not continue without its own script.
            }
        }
        return true;
    }();
    static_cast<void>(isReady);
    return state;
}

void LibraryState::reset() {
    tree = NodeTree();
    calls.clear();
    observer = nullptr;
    commands.clear();
    resultRules.clear();
    runCounts.clear();
    running.clear();
    lastUniqueNumber = 0;
}

std::function<void(const Call &)> LibraryState::record(const Call &call) {
    const std::lock_guard<std::mutex> lock(mutex);
    calls.push_back(call);
    if (!recordFile.empty()) {
        appendLine(recordFile, lineOf(call));
    }
    return observer;
}

std::optional<std::int32_t> LibraryState::scriptedResult(const Call &call) {
    std::optional<std::int32_t> code;
    for (auto rule = resultRules.rbegin(); rule != resultRules.rend(); ++rule) {
        if (!matches(rule->function.c_str(), call.function.c_str()) ||
            !matches(rule->pathPattern.c_str(), call.path.c_str())) {
            continue;
        }
        ++rule->matchCount;
        if (!code && (rule->occurrence == 0 || rule->occurrence == rule->matchCount)) {
            code = rule->code;
        }
    }
    return code;
}

void LibraryState::addResult(const std::string &function, const std::string &pathPattern, std::int32_t code,
                             std::int32_t occurrence) {
    resultRules.push_back({function, pathPattern, code, occurrence, 0});
}

CommandScript LibraryState::nextRun(const std::string &commandName) {
    const auto runs = commands.find(commandName);
    if (runs == commands.end() || runs->second.empty()) {
        return {};
    }
    const std::size_t run = runCounts[commandName]++;
    return runs->second[std::min(run, runs->second.size() - 1)];
}

void LibraryState::writeString(const std::string &path, const std::string &text) {
    const std::string slot = slotOfCommand(path);
    if (slot.empty()) {
        tree.set(path, text);
        return;
    }
    if (running.count(slot) != 0 && tree.contains(slot)) {
        throw Failure{LmLibResultCommandRunning};
    }
    tree.set(path, text);
    const CommandScript script = nextRun(text);
    if (script.end == CommandEnd::AtOnce) {
        finish(slot, text, script);
    } else {
        running[slot] = script;
    }
}

void LibraryState::finish(const std::string &slotPath, const std::string &commandName, const CommandScript &script) {
    if (script.errorSymbol.empty()) {
        tree.set(slotPath + "/Result", Json::parse(script.resultJson));
        if (script.image && tree.contains(slotPath + "/Parameters/ImageSize")) {
            putImages(slotPath, *script.image);
        }
    } else {
        tree.set(slotPath + "/Result", {{"ErrorSymbol", script.errorSymbol},
                                        {"ErrorText", script.errorText},
                                        {"Execute", {{"Command", commandName}}}});
    }
    tree.set(slotPath + "/Command", nullptr);
}

void LibraryState::putImages(const std::string &slotPath, const Binary &image) {
    const std::string patterns = slotPath + "/Parameters/Patterns";
    const std::size_t count = tree.contains(patterns) ? std::max<std::size_t>(tree.at(patterns).size(), 1) : 1;
    for (std::size_t i = 0; i < count; ++i) {
        tree.setBinary(slotPath + "/Result/Patterns/\\" + std::to_string(i), image);
    }
}

void LibraryState::waitForType(const std::string &path, std::int32_t type, bool waitForChange) {
    const std::string slot = slotOfCommand(path);
    const auto pending = running.find(slot);
    if (waitForChange && pending != running.end() && pending->second.end == CommandEnd::WhenWaitedFor) {
        finish(slot, tree.at(path).get<std::string>(), pending->second);
        running.erase(pending);
    }
    const std::int32_t actual = type == LmLibTypeAbsent && !tree.contains(path) ? LmLibTypeAbsent : tree.typeAt(path);
    if (actual != type) {
        throw Failure{LmLibResultTimeout};
    }
}

std::string LibraryState::makeUniqueItem(const std::string &parentPath, const std::string &baseName) {
    std::string path = parentPath + "/" + baseName + std::to_string(++lastUniqueNumber);
    tree.set(path, Json::object());
    return path;
}

}  // namespace scripted_lmlib64
