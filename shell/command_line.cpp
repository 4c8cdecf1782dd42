#include "shell/command_line.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <utility>

namespace shell {

Option &Option::typeName(const std::string &name) {
    option->type_name(name);
    return *this;
}

Option &Option::required() {
    option->required();
    return *this;
}

Option &Option::positive() {
    option->check(CLI::PositiveNumber);
    return *this;
}

Option &Option::range(int least, int greatest) {
    option->check(CLI::Range(least, greatest));
    return *this;
}

Option &Option::oneOf(const std::vector<std::string> &texts) {
    option->check(CLI::IsMember(texts));
    return *this;
}

Option &Option::expected(int values) {
    option->expected(values);
    return *this;
}

Option &Option::oneValueEachTime() {
    option->allow_extra_args(false);
    return *this;
}

Option &Option::needs(const Option &other) {
    option->needs(other.option);
    return *this;
}

Option &Option::needs(const std::string &name) {
    option->needs(name);
    return *this;
}

CommandLine::CommandLine(const std::string &name, const std::string &description)
    : ownName(name), program(std::make_unique<CLI::App>(description, name)), parser(program.get()) {
    parser->allow_windows_style_options(false);  // "/photos/a.jpg" is a file name on Windows, too
}

CommandLine::CommandLine(const std::string &name, CLI::App &command) : ownName(name), parser(&command) {}

CommandLine::~CommandLine() = default;

template <typename Value>
Option CommandLine::add(const std::string &names, Value &value, const std::string &description) {
    return Option(*parser->add_option(names, value, description));
}

template Option CommandLine::add(const std::string &, std::string &, const std::string &);
template Option CommandLine::add(const std::string &, std::vector<std::string> &, const std::string &);
template Option CommandLine::add(const std::string &, double &, const std::string &);
template Option CommandLine::add(const std::string &, unsigned &, const std::string &);
template Option CommandLine::add(const std::string &, int &, const std::string &);
template Option CommandLine::add(const std::string &, std::optional<int> &, const std::string &);
template Option CommandLine::add(const std::string &, std::optional<double> &, const std::string &);

Option CommandLine::addText(const std::string &name, std::function<std::string(const std::string &)> take,
                            const std::string &description) {
    const auto takeOrRefuse = [name, take = std::move(take)](const std::string &text) {
        const std::string fault = take(text);
        if (!fault.empty()) {
            throw CLI::ValidationError(name, fault);
        }
    };
    return Option(*parser->add_option_function<std::string>(name, takeOrRefuse, description));
}

void CommandLine::addFlag(const std::string &name, bool &isGiven, const std::string &description) {
    parser->add_flag(name, isGiven, description);
}

void CommandLine::addVersion(const std::string &text) {
    parser->set_version_flag("--version", text);
}

CommandLine &CommandLine::addCommand(const std::string &name, const std::string &title, const std::string &description,
                                     std::function<void()> whenGiven) {
    CLI::App &command = *parser->add_subcommand(name, description);
    command.group(title);
    command.callback(std::move(whenGiven));
    parser->require_subcommand(0, 1);
    commands.push_back(std::unique_ptr<CommandLine>(new CommandLine(name, command)));
    return *commands.back();
}

void CommandLine::describeCommands(const std::string &label, const std::string &helpAllDescription) {
    parser->get_formatter()->label("SUBCOMMAND", label);
    parser->set_help_all_flag("--help-all", helpAllDescription);
}

void CommandLine::setFooter(const std::string &text) {
    parser->footer(text);
}

bool CommandLine::parse(int argumentCount, char **arguments) {
    try {
        parser->parse(argumentCount, arguments);
        return true;
    } catch (const CLI::ParseError &error) {
        // For CLI11, --help and --version are errors with the code 0.
        if (error.get_exit_code() != 0) {
            throw WrongCall(std::string(error.what()) + " (see " + ownName + " --help)");
        }
        parser->exit(error);
        return false;
    }
}

}  // namespace shell
