// draw_pattern KIND [OPTIONS] -o FILE
//
// Draws calibration targets with the camera library and writes them to files. The exit codes are those of
// program_run.h.
#include <charconv>
#include <iostream>
#include <string_view>

#include "shell/pattern_command.h"
#include "shell/program_run.h"

namespace {

using shell::PatternChoice;
using shell::TargetKind;

struct Arguments {
    PatternChoice choice;
    shell::Outputs outputs;
    std::string parameterFile;
    std::string patternFile;
    bool listsPlates = false;
};

// Reads two numbers with a separator between them, such as 15x9. The result is empty if the text is anything else. The
// locale makes no difference.
template <typename Number>
std::optional<std::array<Number, 2>> pairOf(std::string_view text, char separator) {
    std::array<Number, 2> pair{};
    const char *end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, pair[0]);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != separator) {
        return std::nullopt;
    }
    const auto second = std::from_chars(first.ptr + 1, end, pair[1]);
    return second.ec == std::errc() && second.ptr == end ? std::optional(pair) : std::nullopt;
}

template <typename Number>
CLI::Option *addPair(CLI::App &app, const std::string &name, std::optional<std::array<Number, 2>> &pair, char separator,
                     const std::string &form, const std::string &description) {
    return app
        .add_option_function<std::string>(
            name,
            [&pair, separator, form, name](const std::string &text) {
                pair = pairOf<Number>(text, separator);
                if (!pair) {
                    throw CLI::ValidationError(name, "\"" + text + "\" is not of the form " + form);
                }
            },
            description)
        ->type_name(form);
}

void addOutput(CLI::App &app, Arguments &arguments) {
    shell::Outputs &outputs = arguments.outputs;
    app.add_option("-o,--output", outputs.files,
                   "File to write; its ending selects the format. May be repeated for several formats")
        ->type_name("FILE")
        ->allow_extra_args(false);
    app.add_option("--resolution", outputs.resolution, "Pixels per inch of a .png file")->type_name("DPI");
    addPair(app, "--print-scale", outputs.printScale, ',', "X,Y",
            "Measured length divided by true length of a print at 100 %, such as 0.995,1; corrects the next print");
    app.add_option_function<std::string>(
           "--paper",
           [&outputs](const std::string &text) {
               if (const auto size = pairOf<double>(text, 'x')) {
                   outputs.paper = *size;
               } else {
                   outputs.paper = text;
               }
           },
           "Paper to print on: A4 to A0, Letter, Legal, Tabloid or a size in mm; by default the smallest of A4 to A0 "
           "that "
           "fits")
        ->type_name("NAME|WxH");
    app.add_flag("--sheets", outputs.splitsOverSheets,
                 "If a pattern does not fit on the paper, splits it over several sheets");
}

CLI::App &addKind(CLI::App &app, Arguments &arguments, TargetKind kind, const std::string &name,
                  const std::string &description) {
    CLI::App &command = *app.add_subcommand(name, description);
    command.group("Kinds of pattern");
    command.callback([&arguments, kind] { arguments.choice.kind = kind; });
    command.add_flag("--inverted", arguments.choice.isInverted, "Exchanges dark and light");
    command.add_flag("--plain", arguments.choice.isPlain, "Draws no code");
    addOutput(command, arguments);
    return command;
}

void addGridSpacing(CLI::App &command, Arguments &arguments) {
    command
        .add_option("--grid-spacing", arguments.choice.gridSpacing,
                    "Length of two squares, or distance between the centres of neighbouring marks")
        ->type_name("MM")
        ->required();
    command.add_option("--thickness", arguments.choice.thickness, "Thickness of the plate")->type_name("MM");
}

void addKinds(CLI::App &app, Arguments &arguments) {
    PatternChoice &choice = arguments.choice;
    CLI::App &official =
        addKind(app, arguments, TargetKind::Official, "official", "A plate in a common size, see --list");
    official.add_option("--plate", choice.plate, "Type of the plate, as --list shows it")
        ->type_name("TYPE")
        ->required();

    CLI::App &custom = addKind(app, arguments, TargetKind::Custom, "custom",
                               "A board of 15 x 15 corners that encodes its grid spacing and thickness");
    addGridSpacing(custom, arguments);

    CLI::App &flexible =
        addKind(app, arguments, TargetKind::Flexible, "flexible", "A board of any size, cut out of one large plane");
    addPair(flexible, "--size", choice.gridSize, 'x', "CxR", "Columns and rows of inner corners")->required();
    addGridSpacing(flexible, arguments);
    addPair(flexible, "--offset", choice.offset, ',', "X,Y",
            "Position in the plane in mm; a multiple of half the grid spacing, except with --plain");

    CLI::App &assembly =
        addKind(app, arguments, TargetKind::Assembly, "assembly", "Several patterns for one common coordinate system");
    assembly.add_option("--patterns", choice.patterns, "Number of patterns")
        ->type_name("N")
        ->required()
        ->check(CLI::Range(1, 18));
    addGridSpacing(assembly, arguments);

    CLI::App &halcon = addKind(app, arguments, TargetKind::Halcon, "halcon", "A plate of 7 x 7 round marks in a frame");
    addGridSpacing(halcon, arguments);
    addPair(halcon, "--offset", choice.offset, ',', "X,Y",
            "Position in mm, encoded instead of the grid spacing and the thickness; a multiple of the grid spacing, "
            "except with --plain");
}

void addOptions(CLI::App &app, Arguments &arguments) {
    addKinds(app, arguments);
    app.require_subcommand(0, 1);
    app.get_formatter()->label("SUBCOMMAND", "KIND");
    app.add_flag("--list", arguments.listsPlates, "Lists the official plates");
    app.add_option("--json", arguments.parameterFile,
                   "Draws with the library's parameters in this JSON file; - stands for standard input")
        ->type_name("FILE");
    app.add_option("--from", arguments.patternFile,
                   "Draws the patterns of this pattern file (a .json that was written before) again")
        ->type_name("FILE");
    addOutput(app, arguments);
    app.set_version_flag("--version", "draw_pattern " LMCALTAB_VERSION);
    app.set_help_all_flag("--help-all", "Print this help message with the options of every kind");
    app.footer(
        "Examples:\n"
        "  draw_pattern flexible --size 15x9 --grid-spacing 25 -o target.pdf -o target.json\n"
        "  draw_pattern official --plate Plate12 -o plate.pdf\n"
        "  draw_pattern assembly --patterns 5 --grid-spacing 12 -o cube.pdf\n"
        "  draw_pattern --from target.json -o again.pdf\n"
        "  echo '{\"Patterns\":[{\"GridSpacing\":12}]}' | draw_pattern --json - -o plate.pdf\n"
        "Exit codes: 0 success, 1 something could not be drawn or written, 2 wrong options or an unusable input file.");
}

bool draw(const CLI::App &app, const Arguments &arguments) {
    const bool hasKind = !app.get_subcommands().empty();
    const int asked = (hasKind ? 1 : 0) + (arguments.listsPlates ? 1 : 0) + (arguments.parameterFile.empty() ? 0 : 1) +
                      (arguments.patternFile.empty() ? 0 : 1);
    if (asked != 1) {
        throw shell::WrongCall("give one of official, custom, flexible, assembly, halcon, --json, --from and --list");
    }
    if (hasKind) {
        shell::drawChoice(arguments.choice, arguments.outputs);
    } else if (!arguments.parameterFile.empty()) {
        shell::drawParameters(arguments.parameterFile, arguments.outputs);
    } else if (!arguments.patternFile.empty()) {
        shell::drawAgain(arguments.patternFile, arguments.outputs);
    } else {
        std::cout << shell::plateTable();
    }
    return true;
}

}  // namespace

int main(int count, char **values) {
    Arguments arguments;
    CLI::App app("Draws calibration targets as files that print at true size.", "draw_pattern");
    addOptions(app, arguments);
    return shell::runProgram(app, count, values, [&] { return draw(app, arguments); });
}
