// Declares the options and commands of a command-line program, parses the arguments into the program's variables, and
// prints the help. It does not run the program's work; program_run.h does.
//
// It hides CLI11 because the headers of CLI11 take longer to compile than all the rest of such a program. Help lists
// options in the order in which they were added. A variable that was given to add() or addFlag() keeps its value if the
// option is absent, and must exist until parse() returns. Options and commands are valid as long as the CommandLine
// that made them.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace shell {

// Thrown if the options are wrong, for example if they contradict each other or a value is out of its range. The text
// names the fault.
class WrongCall : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// An option that has been added. Each function states one more rule for it and returns the option itself. Arguments
// that break a rule are refused.
class Option {
public:
    explicit Option(CLI::Option &added) : option(&added) {}

    // Help shows this name for the option's value, such as FILE or MM.
    Option &typeName(const std::string &name);
    // The option must be given.
    Option &required();
    // The value is a number greater than 0.
    Option &positive();
    // The value is a number of this range, which includes both ends.
    Option &range(int least, int greatest);
    // The value is one of these texts.
    Option &oneOf(const std::vector<std::string> &texts);
    // The option takes exactly this many values.
    Option &expected(int values);
    // Takes one value each time that it is given. Without this rule, an option with a list takes all values that
    // follow.
    Option &oneValueEachTime();
    // The option may be given only together with another one.
    Option &needs(const Option &other);
    Option &needs(const std::string &name);

private:
    CLI::Option *option;
};

class CommandLine {
public:
    CommandLine(const std::string &name, const std::string &description);
    ~CommandLine();
    CommandLine(const CommandLine &) = delete;
    CommandLine &operator=(const CommandLine &) = delete;

    const std::string &name() const { return ownName; }

    // Adds an option that sets a variable. `names` gives the option's names, as in "-o,--output". For a positional
    // argument, it is a name without a dash, such as "PHOTO". Value may be std::string, std::vector<std::string>,
    // double, unsigned, int, std::optional<int> or std::optional<double>.
    template <typename Value>
    Option add(const std::string &names, Value &value, const std::string &description);

    // Adds an option whose text is given to `take`, which returns what is wrong with it, or an empty text.
    Option addText(const std::string &name, std::function<std::string(const std::string &)> take,
                   const std::string &description);

    // Adds an option without a value. `isGiven` becomes true if it is given.
    void addFlag(const std::string &name, bool &isGiven, const std::string &description);

    // Adds the option --version, which prints the text.
    void addVersion(const std::string &text);

    // Adds a command with options of its own, such as "official" of "draw_pattern official --plate Plate12". At most
    // one command may be given; parse() calls the `whenGiven` of that command. Help lists the commands below `title`.
    CommandLine &addCommand(const std::string &name, const std::string &title, const std::string &description,
                            std::function<void()> whenGiven);

    // Sets the placeholder that stands for a command in the help, such as KIND. Also adds the option --help-all, which
    // prints the options of all commands. The help describes this option with the text `helpAllDescription`.
    void describeCommands(const std::string &label, const std::string &helpAllDescription);

    // Help ends with this text.
    void setFooter(const std::string &text);

    // Sets the variables and returns true. If only help or the version was asked for, prints it and returns false.
    // Throws WrongCall if the arguments are wrong.
    bool parse(int argumentCount, char **arguments);

private:
    CommandLine(const std::string &name, CLI::App &command);

    std::string ownName;
    std::unique_ptr<CLI::App> program;  // null for a command; the program's parser owns the command's parser
    CLI::App *parser;
    std::vector<std::unique_ptr<CommandLine>> commands;
};

}  // namespace shell
