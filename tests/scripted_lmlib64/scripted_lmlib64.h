// A stand-in for the camera library that records every call and answers as a test tells it to. It exports those
// functions of camera_library/lmlib64.h that the program uses, over a small tree in memory, and draws nothing. A
// command ends before the write of its name returns.
//
// In a test of the program's parts: link the CMake target scripted_lmlib64 (and not LmLib64) and begin each test
// with reset(), or with loadDefaultScript() for a library that answers everything the program asks:
//
//     scripted_lmlib64::reset();
//     scripted_lmlib64::setNode("/A", "42");                                  // JSON; not recorded
//     scripted_lmlib64::setResult("lmLibSetInt", "/Execute/*/ImageSize", 13);  // every such call fails
//     scripted_lmlib64::failCommand("GetModelInfo", "NoCamera", "No camera.");
//     ... the part under test ...
//     EXPECT_EQ(scripted_lmlib64::callLines().at(0), "lmLibSetInt /Execute/1/ImageSize 2000");
//
// In place of the library beside the program: start the unchanged program with LD_LIBRARY_PATH set to the folder
// tests/scripted of the build tree. LMLIB64_RECORD names a file to which every call is appended as one line, as
// callLines() gives it, at the moment of the call. LMLIB64_SCRIPT names a JSON file that is applied over the default
// script, in which everything is optional:
//
//     {"nodes":    {"<path>": <any value>, ...},
//      "codes":    {"<function>": <result code of every call>, ...},
//      "commands": {"<name>": <the command's "Result">, ...}}
//
// Slots made by lmLibMakeUniqueItem are numbered from 1 since the last reset: the first is /Execute/1. One thread at a
// time.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "camera_library/lmlib64.h"

namespace scripted_lmlib64 {

// One call into the library. The value is what was passed after the path: the text, the number in the fewest
// digits that read back to it, "true" or "false", or several of them with blanks between; for the two binary
// calls also a word if the caller asks for what the program does not use. A message of the debug log is a value.
struct Call {
    std::string function;
    std::string path;
    std::string value;
    bool hasResult = true;  // a target for the result code was passed
};

// A binary node with one byte per element; the bytes need not fit the format.
struct Binary {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channelCount = 1;
    std::vector<std::uint8_t> bytes;
};

// A tree with nothing but /Execute, no calls, no scripts: every command succeeds with an empty result.
LMLIB64_API void reset();
// reset(), and then adds what the program needs to start: a catalogue of the plates A, B and C, a 4 x 4 grey image for
// each pattern that is generated, and the nodes below /Path.
LMLIB64_API void loadDefaultScript();

// The calls since the last reset or clearCalls, and the same as lines: function, path and value with a blank
// between, and "[no result]" at the end if no result code was asked for.
LMLIB64_API std::vector<Call> calls();
LMLIB64_API std::vector<std::string> callLines();
LMLIB64_API void clearCalls();
// Is shown every call once it is recorded and before it is answered, until reset().
LMLIB64_API void observeCalls(const std::function<void(const Call &)> &observer);

// Puts a node into the tree or looks at one; not recorded. Missing parents are made.
LMLIB64_API void setNode(const std::string &path, const std::string &json);
LMLIB64_API void setBinary(const std::string &path, const Binary &binary);
// Compact JSON of a node that is there.
LMLIB64_API std::string nodeJson(const std::string &path);

// Makes calls whose function and path match the patterns ("*" stands for any characters, none included) do nothing but
// set this code and return 0 or null; code 0 does so, too. occurrence chooses the n-th matching call from now on, 0 all
// of them. The rule that was set last counts.
LMLIB64_API void setResult(const std::string &functionPattern, const std::string &pathPattern, std::int32_t code,
                           std::int32_t occurrence = 0);

// What the command of this name leaves in its "Result", or the failure it ends with.
LMLIB64_API void setCommandResult(const std::string &name, const std::string &json);
LMLIB64_API void failCommand(const std::string &name, const std::string &symbol, const std::string &text);
// The picture of every pattern that is generated with an "ImageSize".
LMLIB64_API void setImage(const Binary &image);

}  // namespace scripted_lmlib64
