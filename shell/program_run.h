// Parses the options, reports the errors and determines the exit code of every command-line program of this project.
//
// The exit code is 0 if everything was done. It is `failure` if something could not be read, computed or written. It is
// `wrongCall` if the options are wrong or if the file that an option names cannot be used. A message is one line on
// standard error and begins with the program's name. If the work succeeded but standard output could not be written,
// the program ends with `failure`, so that a full disk is noticed.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <stdexcept>
#include <string>

namespace shell {

constexpr int failure = 1;
constexpr int wrongCall = 2;

// Thrown if the options are wrong, for example if they contradict each other or a value is out of its range. The text
// names the fault.
class WrongCall : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Prints "NAME: text" on standard error. The line stays whole if several threads report at the same time.
void report(const CLI::App &program, const std::string &text);

// Parses the arguments, runs the work and returns the exit code. `work` returns false if it has failed and has reported
// the reason. runProgram reports an exception that `work` throws.
int runProgram(CLI::App &program, int argumentCount, char **arguments, const std::function<bool()> &work);

}  // namespace shell
