// How every command-line program of this project parses its options, reports errors and ends.
//
// Exit codes: 0 if everything was done, `failure` if something could not be read, computed or written, `wrongCall` if
// the options are wrong or name a file that is not what the option asks for. A message is one line on standard error,
// with the program's name before it. A program whose standard output cannot be written ends with `failure`, so that a
// full disk is noticed.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <stdexcept>
#include <string>

namespace shell {

constexpr int failure = 1;
constexpr int wrongCall = 2;

// Options that contradict each other or a value that is out of its range; the text says which.
class WrongCall : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Prints "NAME: text" on standard error. The line stays whole if several threads report at the same time.
void report(const CLI::App &program, const std::string &text);

// Parses the arguments, runs the work and returns the exit code. `work` returns false if it failed and has reported
// why; what it throws is reported here.
int runProgram(CLI::App &program, int argumentCount, char **arguments, const std::function<bool()> &work);

}  // namespace shell
