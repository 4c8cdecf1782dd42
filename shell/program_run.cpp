#include "shell/program_run.h"

#include <exception>
#include <iostream>

#include "shell/standard_streams.h"

namespace shell {

namespace {

int codeOf(const CLI::App &program, const std::function<bool()> &work) {
    try {
        return work() ? 0 : failure;
    } catch (const WrongCall &error) {
        report(program, error.what());
        return wrongCall;
    } catch (const std::exception &error) {
        report(program, error.what());
        return failure;
    }
}

}  // namespace

void report(const CLI::App &program, const std::string &text) {
    writeError(program.get_name() + ": " + text + "\n");
}

int runProgram(CLI::App &program, int argumentCount, char **arguments, const std::function<bool()> &work) {
    prepareStandardStreams();
    program.allow_windows_style_options(false);  // "/photos/a.jpg" is a file name on Windows, too
    int code = 0;
    try {
        program.parse(argumentCount, arguments);
        code = codeOf(program, work);
    } catch (const CLI::ParseError &error) {
        // For CLI11, --help and --version are errors with the code 0.
        if (error.get_exit_code() == 0) {
            program.exit(error);
        } else {
            report(program, std::string(error.what()) + " (see " + program.get_name() + " --help)");
            code = wrongCall;
        }
    }
    std::cout.flush();
    if (!std::cout) {
        report(program, "Standard output cannot be written.");
        return code == 0 ? failure : code;
    }
    return code;
}

}  // namespace shell
