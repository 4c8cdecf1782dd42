// A replacement for the camera library that records every call and answers as a test tells it to. It exports those
// functions of camera_library/lmlib64.h that the program uses, and keeps a small tree in memory. It computes nothing
// and has no thread of its own: a command's script says when the command ends.
//
// Use in a test of the program's parts: link the CMake target scripted_lmlib64 (and not LmLib64), and begin each test
// with reset(), or with loadDefaultScript() for a library that answers everything the program asks:
//
//     scripted_lmlib64::reset();
//     scripted_lmlib64::setNode("/A", "42");                                  // JSON; not recorded
//     scripted_lmlib64::setResult("lmLibSetInt", "/Execute/*/ImageSize", 13);  // every such call fails
//     scripted_lmlib64::setCommand("GetModelInfo", {CommandScript::failing("NoCamera", "No camera.")});
//     ... the part under test ...
//     QCOMPARE(scripted_lmlib64::callLines().at(0), std::string("lmLibSetInt /Execute/1/ImageSize 2000"));
//
// Use instead of the library beside the program: start the unchanged program with LD_LIBRARY_PATH set to the folder
// tests/scripted of the build tree. LMLIB64_RECORD names a file to which every call is appended when it is made, as a
// line like those of callLines(). LMLIB64_SCRIPT names a JSON file in the form of loadScript(), which is added to the
// default script.
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

// One call into the library. The value is what was passed after the path: the text, the number in the fewest digits
// that read back to it, "true" or "false", or several of these separated by spaces. For the two binary calls it also
// has the names of the out parameters that were not null. For a message to the debug log it is the message.
struct Call {
    std::string function;
    std::string path;
    std::string value;
    bool hasResult = true;  // a target for the result code was passed
};

// A binary node with one byte per element. The number of bytes need not match the other members.
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
    // If "ImageSize" is among the parameters, the image is stored in "Result"/"Patterns", once for each of the
    // command's "Patterns" (at least once).
    std::optional<Binary> image;
    // If this is not empty, the command fails, and its result has only the three nodes of a failure.
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

// Removes all nodes, calls and scripts. Every command then ends at once with an empty result.
LMLIB64_API void reset();
// reset(), and then adds what the program needs to start: a catalogue of the plates A, B and C, a 4 x 4 grey image for
// each pattern that is generated, and the nodes below /Path.
LMLIB64_API void loadDefaultScript();
// Adds nodes, results and commands from a JSON text:
//   {"nodes":    {"<path>": <any value>, ...},
//    "results":  [{"function": "lmLibErase", "path": "/Execute/*", "code": 7}, ...],
//    "commands": {"<name>": {"result": <object>, "errorSymbol", "errorText"}, ...}}
// Every member is optional. Throws std::exception if the text has another form.
LMLIB64_API void loadScript(const std::string &json);

// The calls since the last reset or clearCalls, and the same as lines: function, path and value separated by spaces,
// "[no result]" at the end if no result code was asked for, and line feeds written as \n.
LMLIB64_API std::vector<Call> calls();
LMLIB64_API std::vector<std::string> callLines();
LMLIB64_API void clearCalls();
// Sets a function that is called with every call, on the thread of the call, after it is recorded and before it is
// answered. It stays until reset() or until another one is set; an empty function means none. It may use everything
// here and must not throw.
LMLIB64_API void observeCalls(const std::function<void(const Call &)> &observer);

// These write a node or look at one, without recording a call. Missing nodes along the path are created.
LMLIB64_API void setNode(const std::string &path, const std::string &json);
LMLIB64_API void setBinary(const std::string &path, const Binary &binary);
LMLIB64_API bool hasNode(const std::string &path);
// Compact JSON; an empty text if there is no such node.
LMLIB64_API std::string nodeJson(const std::string &path);

// Calls whose function and path match the patterns ("*" stands for any number of characters) only set this code and
// return 0 or null, even if the code is 0. With an occurrence n above 0, only the n-th matching call from now on does
// so. If several rules match, the one that was set last applies.
LMLIB64_API void setResult(const std::string &function, const std::string &pathPattern, std::int32_t code,
                           std::int32_t occurrence = 0);

// Sets what each run of the command with this name does. The last entry applies to all further runs.
LMLIB64_API void setCommand(const std::string &name, const std::vector<CommandScript> &runs);

}  // namespace scripted_lmlib64

#endif
