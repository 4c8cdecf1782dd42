// A command of the library is a function. It takes the "Parameters" of the slot that it runs in (see lmlib64.h) and
// returns the slot's "Result". The function has no access to the tree or the tree's lock, and does not depend on the
// thread that it runs on. To add a command, write its function in a file of its own in this folder, then declare and
// list the function in command_table.cpp.
#pragma once

#include <string>
#include <string_view>

#include "camera_library/tree/node.h"

namespace lmlib64 {

// A command throws this if it cannot do its work. The members become "ErrorSymbol" and "ErrorText" in the slot's
// "Result".
struct CommandFailure {
    std::string symbol;  // short identifier, such as "InvalidParameter"
    std::string text;    // one sentence for the user, with the parameter, its value and the allowed values
};

// Takes a copy of "Parameters" (null if the slot has none) and returns the node that becomes "Result".
using CommandFunction = Node (*)(const Node &parameters);

// Returns the command of this name; null if there is none.
CommandFunction findCommand(std::string_view name);

}  // namespace lmlib64
