// Runs a command-line program: parses the options, reports the errors and determines the exit code. All command-line
// programs of this project share it.
//
// The exit code is 0 if everything was done. It is `wrongCall` if the options are wrong or if an input file that is not
// a picture, such as a pattern file, cannot be used. It is `failure` if the work fails in another way: something cannot
// be read, computed or written. A message is one line on standard error and begins with the program's name. If the work
// succeeded but standard output could not be written, the program ends with `failure`, so that a full disk is noticed.
#pragma once

#include <functional>

#include "shell/command_line.h"

namespace shell {

constexpr int failure = 1;
constexpr int wrongCall = 2;

// Parses the arguments, runs the work and returns the exit code. `work` returns false if it has failed and has reported
// the reason. runProgram reports an exception that `work` throws.
int runProgram(CommandLine &program, int argumentCount, char **arguments, const std::function<bool()> &work);

}  // namespace shell
