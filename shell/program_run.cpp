#include "shell/program_run.h"

#include <exception>
#include <iostream>

#include "shell/standard_streams.h"

namespace shell {

int runProgram(CommandLine &program, int argumentCount, char **arguments, const std::function<bool()> &work) {
    const auto report = [&program](const std::string &text) { writeError(program.name() + ": " + text + "\n"); };
    prepareStandardStreams();
    int code = 0;
    try {
        if (program.parse(argumentCount, arguments)) {
            code = work() ? 0 : failure;
        }
    } catch (const WrongCall &error) {
        report(error.what());
        code = wrongCall;
    } catch (const std::exception &error) {
        report(error.what());
        code = failure;
    }
    std::cout.flush();
    if (!std::cout) {
        report("Standard output cannot be written.");
        return code == 0 ? failure : code;
    }
    return code;
}

}  // namespace shell
