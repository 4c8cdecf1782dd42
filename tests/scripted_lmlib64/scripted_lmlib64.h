// A replacement for the camera library that records every call and answers as a test tells it to. It exports those
// functions of camera_library/lmlib64.h that the program uses, keeps a small tree in memory, and draws nothing. The
// call that writes the name of a command returns only after the command has ended.
//
// In a test of the program's parts, link the CMake target scripted_lmlib64 instead of LmLib64, and begin each test with
// reset(). If the library must answer everything that the program asks, begin with loadDefaultScript() instead:
//
//     scripted_lmlib64::reset();
//     scripted_lmlib64::setNode("/A", "42");                                  // JSON; not recorded
//     scripted_lmlib64::setResult("lmLibSetInt", "/Execute/*/ImageSize", 13);  // every such call fails
//     scripted_lmlib64::failCommand("GetModelInfo", "NoCamera", "No camera.");
//     ... the part under test ...
//     EXPECT_EQ(scripted_lmlib64::callLines().at(0), "lmLibSetInt /Execute/1/ImageSize 2000");
//
// In a test of the unchanged program, set LD_LIBRARY_PATH to the folder tests/scripted of the build tree. The program
// then loads this library instead of the one beside it. If LMLIB64_RECORD names a file, every call appends a line to
// that file, in the form of callLines(). If LMLIB64_SCRIPT names a JSON file, that file is applied over the default
// script. All members of the file are optional:
//
//     {"nodes":    {"<path>": <any value>, ...},
//      "codes":    {"<function>": <result code of every call>, ...},
//      "commands": {"<name>": <the command's "Result">, ...}}
//
// Slots made by lmLibMakeUniqueItem are numbered from 1 since the last reset: the first is /Execute/1. Only one thread
// may use the library at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "camera_library/lmlib64.h"

namespace scripted_lmlib64 {

// One call into the library. `value` has the arguments after the path, separated by spaces: a text, "true" or "false",
// or a number as std::to_chars writes it (the shortest text that gives the same number when it is read). If the call
// writes a message to the debug log, `value` is the message.
//
// If the caller asks lmLibGetBinaryInfo for the bytes per element or the timestamp, `value` has the word "more". If the
// caller asks lmLibGetBinary for the timestamp, `value` also has the word "timestamp". The program must not ask for
// these, because it does not need them.
struct Call {
    std::string function;
    std::string path;
    std::string value;
    bool hasResult = true;  // true if the caller passed a target for the result code
};

// A binary node with one byte per element. The number of bytes need not match the other members.
struct Binary {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channelCount = 1;
    std::vector<std::uint8_t> bytes;
};

// Removes all calls, all scripts and all nodes except /Execute. Every command then succeeds with an empty result.
LMLIB64_API void reset();
// Calls reset(), and then adds what the program needs to start: a catalogue of the plates A, B and C, a 4 x 4 grey
// image for each pattern that is generated, and the nodes below /Path.
LMLIB64_API void loadDefaultScript();

// The calls since the last reset or clearCalls. callLines() has each call as a line: function, path and value separated
// by spaces, with "[no result]" at the end if the caller passed no target for the result code.
LMLIB64_API std::vector<Call> calls();
LMLIB64_API std::vector<std::string> callLines();
LMLIB64_API void clearCalls();
// Sets a function that is called for every call, after the call is recorded and before it is answered. reset() removes
// the function.
LMLIB64_API void observeCalls(const std::function<void(const Call &)> &observer);

// These functions write or read a node without recording a call. Missing parents are created.
LMLIB64_API void setNode(const std::string &path, const std::string &json);
LMLIB64_API void setBinary(const std::string &path, const Binary &binary);
// The compact JSON of a node, which must exist.
LMLIB64_API std::string nodeJson(const std::string &path);

// Sets the result code of calls whose function and path match the patterns; "*" stands for any number of characters.
// Such a call has no effect: it reports `code` and returns 0 or null, even if `code` is 0. If `occurrence` is above 0,
// the rule applies only to the matching call with this number, counted from now on. If several rules match, the one
// that was set last applies.
LMLIB64_API void setResult(const std::string &functionPattern, const std::string &pathPattern, std::int32_t code,
                           std::int32_t occurrence = 0);

// Set the "Result" of the command with this name, or the failure with which it ends.
LMLIB64_API void setCommandResult(const std::string &name, const std::string &json);
LMLIB64_API void failCommand(const std::string &name, const std::string &symbol, const std::string &text);
// Sets the picture of every pattern that is generated with an "ImageSize".
LMLIB64_API void setImage(const Binary &image);

}  // namespace scripted_lmlib64
