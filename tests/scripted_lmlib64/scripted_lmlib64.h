// A stand-in for the camera library that records every call and answers as a test tells it to. It exports those
// functions of camera_library/lmlib64.h that the program uses, over a small tree in memory, computes nothing, and has
// no thread of its own: a command ends where its script says.
//
// In a test of the program's parts. Link the CMake target scripted_lmlib64 (and not LmLib64) and begin each test
// with reset(), or with loadDefaultScript() for a library that answers everything the program asks:
//
//     scripted_lmlib64::reset();
//     scripted_lmlib64::setNode("/A", "42");                                  // JSON; not recorded
//     scripted_lmlib64::setResult("lmLibSetInt", "/Execute/*/ImageSize", 13);  // every such call fails
//     scripted_lmlib64::setCommand("GetModelInfo", {CommandScript::failing("NoCamera", "No camera.")});
//     ... the part under test ...
//     QCOMPARE(scripted_lmlib64::callLines().at(0), std::string("lmLibSetInt /Execute/1/ImageSize 2000"));
//
// In place of the library beside the program. Start the unchanged program with LD_LIBRARY_PATH set to the folder
// tests/scripted of the build tree. LMLIB64_RECORD names a file to which every call is appended as one line, as
// callLines() gives it, at the moment of the call. LMLIB64_SCRIPT names a JSON file in the form of loadScript(),
// applied over the default script.
//
// Slots made by lmLibMakeUniqueItem are numbered from 1 since the last reset: the first is /Execute/1. Every
// function here may be called from any thread.
#ifndef TESTS_SCRIPTED_LMLIB64_SCRIPTED_LMLIB64_H
#define TESTS_SCRIPTED_LMLIB64_SCRIPTED_LMLIB64_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "camera_library/lmlib64.h"

namespace scripted_lmlib64 {

// One call into the library. The value is what was passed after the path: the text, the number in the fewest
// digits that read back to it, "true" or "false", or several of them with blanks between; for the two binary
// calls also the names of the out parameters that were not null. A message of the debug log is a value.
struct Call {
    std::string function;
    std::string path;
    std::string value;
    bool hasResult = true;  // whether a target for the result code was passed
};

// A binary node of one byte to the element; bytes need not fit the format.
struct Binary {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channelCount = 1;
    std::vector<std::uint8_t> bytes;
};

enum class CommandEnd {
    AtOnce,         // before the write of "Command" returns
    WhenWaitedFor,  // in lmLibWaitForType
    Never,          // lmLibWaitForType ends with LmLibResultTimeout
};

// What one run of a command does.
struct CommandScript {
    std::string resultJson = "{}";
    // Put to "Result"/"Patterns" once for each of the command's "Patterns" (at least once) where "ImageSize" is
    // among the parameters.
    std::optional<Binary> image;
    // With a symbol the command fails and its result is only the failure's three nodes.
    std::string errorSymbol;
    std::string errorText;
    CommandEnd end = CommandEnd::AtOnce;

    static CommandScript failing(const std::string &symbol, const std::string &text) {
        CommandScript script;
        script.errorSymbol = symbol;
        script.errorText = text;
        return script;
    }
};

// An empty tree, no calls, no scripts: every command ends at once with an empty result.
LMLIB64_API void reset();
// reset(), and then a library to start the program with: a catalogue of the plates A, B and C, a 4 x 4 grey image
// for each pattern that is generated, and the nodes below /Path.
LMLIB64_API void loadDefaultScript();
// Adds to what is there, from a JSON text:
//   {"nodes":    {"<path>": <any value>, ...},
//    "results":  [{"function": "lmLibErase", "path": "/Execute/*", "code": 7}, ...],
//    "commands": {"<name>": {"result": <object>, "errorSymbol", "errorText"}, ...}}
// where everything is optional. Throws std::exception for a text that does not say that.
LMLIB64_API void loadScript(const std::string &json);

// The calls since the last reset or clearCalls, and the same as lines: function, path and value with a blank
// between, "[no result]" at the end where no result code was asked for, and line feeds written as \n.
LMLIB64_API std::vector<Call> calls();
LMLIB64_API std::vector<std::string> callLines();
LMLIB64_API void clearCalls();
// Is shown every call on its thread, once it is recorded and before it is answered, until reset() or another
// observer; an empty one shows nothing. It may use everything here and must not throw.
LMLIB64_API void observeCalls(const std::function<void(const Call &)> &observer);

// Puts a node into the tree or looks at one; not recorded. Nodes on the way are made.
LMLIB64_API void setNode(const std::string &path, const std::string &json);
LMLIB64_API void setBinary(const std::string &path, const Binary &binary);
LMLIB64_API bool hasNode(const std::string &path);
// Compact JSON; an empty text where there is no node.
LMLIB64_API std::string nodeJson(const std::string &path);

// Makes calls whose function and path match the patterns ("*" stands for any characters, none included) do nothing but
// set this code and return 0 or null; code 0 does so, too. occurrence chooses the n-th matching call from now on, 0 all
// of them. What was set last is looked at first.
LMLIB64_API void setResult(const std::string &function, const std::string &pathPattern, std::int32_t code,
                           std::int32_t occurrence = 0);

// What the command of this name does, run by run; the last entry holds for all further runs.
LMLIB64_API void setCommand(const std::string &name, const std::vector<CommandScript> &runs);

}  // namespace scripted_lmlib64

#endif
