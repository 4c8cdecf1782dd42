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

using shell::CommandLine;
using shell::PatternChoice;
using shell::TargetKind;

struct Arguments {
    PatternChoice choice;
    shell::Outputs outputs;
    std::string parameterFile;
    std::string patternFile;
    bool hasKind = false;
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
shell::Option addPair(CommandLine &line, const std::string &name, std::optional<std::array<Number, 2>> &pair,
                      char separator, const std::string &form, const std::string &description) {
    const auto take = [&pair, separator, form](const std::string &text) -> std::string {
        pair = pairOf<Number>(text, separator);
        return pair ? "" : "\"" + text + "\" is not of the form " + form;
    };
    return line.addText(name, take, description).typeName(form);
}

void addOutput(CommandLine &line, Arguments &arguments) {
    shell::Outputs &outputs = arguments.outputs;
    line.add("-o,--output", outputs.files,
             "File to write; its ending selects the format. May be repeated for several formats")
        .typeName("FILE")
        .oneValueEachTime();
    line.add("--resolution", outputs.resolution, "Pixels per inch of a .png file").typeName("DPI");
    addPair(
        line, "--print-scale", outputs.printScale, ',', "X,Y",
        "Measured length divided by true length on a print at 100 %, from left to right and from top to bottom of the "
        "page, such as 0.995,1; corrects the next print");
    const auto takePaper = [&outputs](const std::string &text) -> std::string {
        if (const auto size = pairOf<double>(text, 'x')) {
            outputs.paper = *size;
        } else {
            outputs.paper = text;
        }
        return {};
    };
    line.addText(
            "--paper", takePaper,
            "Paper to print on: A4 to A0, Letter, Legal, Tabloid or a size in mm; by default the smallest of A4 to A0 "
            "that fits")
        .typeName("NAME|WxH");
    line.addFlag("--sheets", outputs.splitsOverSheets,
                 "If a pattern does not fit on the paper, splits it over several sheets");
}

CommandLine &addKind(CommandLine &line, Arguments &arguments, TargetKind kind, const std::string &name,
                     const std::string &description) {
    CommandLine &command = line.addCommand(name, "Kinds of pattern", description, [&arguments, kind] {
        arguments.hasKind = true;
        arguments.choice.kind = kind;
    });
    command.addFlag("--inverted", arguments.choice.isInverted, "Exchanges dark and light");
    command.addFlag("--plain", arguments.choice.isPlain, "Draws the pattern without its code");
    addOutput(command, arguments);
    return command;
}

void addGridSpacing(CommandLine &command, Arguments &arguments) {
    command
        .add("--grid-spacing", arguments.choice.gridSpacing,
             "Length of two squares, or distance between the centres of neighbouring marks")
        .typeName("MM")
        .required();
    command.add("--thickness", arguments.choice.thickness, "Thickness of the plate").typeName("MM");
}

void addKinds(CommandLine &line, Arguments &arguments) {
    PatternChoice &choice = arguments.choice;
    CommandLine &official =
        addKind(line, arguments, TargetKind::Official, "official", "A plate in a common size, see --list");
    official.add("--plate", choice.plate, "Type of the plate, as --list shows it").typeName("TYPE").required();

    CommandLine &custom = addKind(line, arguments, TargetKind::Custom, "custom",
                                  "A board of 15 x 15 corners that encodes its grid spacing and thickness");
    addGridSpacing(custom, arguments);

    CommandLine &flexible = addKind(line, arguments, TargetKind::Flexible, "flexible",
                                    "A board of any size; it is a freely chosen part of one large coded plane");
    addPair(flexible, "--size", choice.gridSize, 'x', "CxR", "Columns and rows of inner corners").required();
    addGridSpacing(flexible, arguments);
    addPair(flexible, "--offset", choice.offset, ',', "X,Y",
            "Position in the plane in mm; a multiple of half the grid spacing, except with --plain");

    CommandLine &assembly =
        addKind(line, arguments, TargetKind::Assembly, "assembly", "Several patterns for one common coordinate system");
    assembly.add("--patterns", choice.patterns, "Number of patterns").typeName("N").required().range(1, 18);
    addGridSpacing(assembly, arguments);

    CommandLine &halcon =
        addKind(line, arguments, TargetKind::Halcon, "halcon", "A plate of 7 x 7 round marks in a frame");
    addGridSpacing(halcon, arguments);
    addPair(halcon, "--offset", choice.offset, ',', "X,Y",
            "Position in mm, encoded instead of the grid spacing and the thickness; a multiple of the grid spacing, "
            "except with --plain");
}

void addOptions(CommandLine &line, Arguments &arguments) {
    addKinds(line, arguments);
    line.addFlag("--list", arguments.listsPlates, "Lists the official plates");
    line.add("--json", arguments.parameterFile,
             "Draws the patterns that this JSON file describes with the library's parameters; - stands for standard "
             "input")
        .typeName("FILE");
    line.add("--from", arguments.patternFile,
             "Draws the patterns of this pattern file again (a .json file that draw_pattern or LmCalTab wrote)")
        .typeName("FILE");
    addOutput(line, arguments);
    line.addVersion("draw_pattern " LMCALTAB_VERSION);
    line.describeCommands("KIND", "Print this help message with the options of all kinds of pattern");
    line.setFooter(
        "Examples:\n"
        "  draw_pattern flexible --size 15x9 --grid-spacing 25 -o target.pdf -o target.json\n"
        "  draw_pattern official --plate Plate12 -o plate.pdf\n"
        "  draw_pattern assembly --patterns 5 --grid-spacing 12 -o cube.pdf\n"
        "  draw_pattern --from target.json -o again.pdf\n"
        "  echo '{\"Patterns\":[{\"GridSpacing\":12}]}' | draw_pattern --json - -o plate.pdf\n"
        "Exit codes: 0 success, 1 something could not be drawn or written, 2 wrong options or an unusable input file.");
}

bool draw(const Arguments &arguments) {
    const int asked = (arguments.hasKind ? 1 : 0) + (arguments.listsPlates ? 1 : 0) +
                      (arguments.parameterFile.empty() ? 0 : 1) + (arguments.patternFile.empty() ? 0 : 1);
    if (asked != 1) {
        throw shell::WrongCall(
            "give exactly one of official, custom, flexible, assembly, halcon, --json, --from or --list");
    }
    if (arguments.hasKind) {
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
    CommandLine line("draw_pattern", "Draws calibration targets as files that print at true size.");
    addOptions(line, arguments);
    return shell::runProgram(line, count, values, [&] { return draw(arguments); });
}
