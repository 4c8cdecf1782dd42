// The whole state of the scripted library: the tree, the recorded calls, the scripted results and the commands'
// scripts. The process has one. Its mutex must be held while it is used, unless stated otherwise below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/scripted_lmlib64/node_tree.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace scripted_lmlib64 {

class LibraryState {
public:
    // The state of the process. At first it has the default script, to which the script that LMLIB64_SCRIPT names has
    // been added.
    static LibraryState &instance();

    void reset();
    // Locks the mutex itself. Returns the observer, which is to be called with this call.
    std::function<void(const Call &)> record(const Call &call);
    // The code that a rule of setResult() gives this call, if there is one.
    std::optional<std::int32_t> scriptedResult(const Call &call);
    void addResult(const std::string &function, const std::string &pathPattern, std::int32_t code,
                   std::int32_t occurrence);

    // Writes a text and, if the path is a slot's "Command", runs the command.
    void writeString(const std::string &path, const std::string &text);
    void waitForType(const std::string &path, std::int32_t type, bool waitForChange);
    std::string makeUniqueItem(const std::string &parentPath, const std::string &baseName);

    std::mutex mutex;
    NodeTree tree;
    std::vector<Call> calls;
    std::function<void(const Call &)> observer;
    std::map<std::string, std::vector<CommandScript>> commands;

private:
    struct ResultRule {
        std::string function;
        std::string pathPattern;
        std::int32_t code;
        std::int32_t occurrence;
        std::int32_t matchCount;
    };

    CommandScript nextRun(const std::string &commandName);
    void finish(const std::string &slotPath, const std::string &commandName, const CommandScript &script);
    void putImages(const std::string &slotPath, const Binary &image);

    std::vector<ResultRule> resultRules;
    std::map<std::string, std::size_t> runCounts;
    std::map<std::string, CommandScript> running;  // by slot path
    std::int32_t lastUniqueNumber = 0;
    std::string recordFile;
};

std::string lineOf(const Call &call);
// Both expect the mutex to be held; see loadScript.
void applyScript(LibraryState &state, const std::string &json);
void applyDefaultScript(LibraryState &state);

}  // namespace scripted_lmlib64
