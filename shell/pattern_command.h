// Fills in the parameters of the library's command "GenerateCalibrationPattern" from what the command line says, and
// runs it once for each output. The library checks every value; its texts reach the user unchanged.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace shell {

// The kinds of target, named like the pages of the program.
enum class TargetKind { Official, Custom, Flexible, Assembly, Halcon };

// What to draw. Lengths in millimetres; an absent value is left to the library's default.
struct PatternChoice {
    TargetKind kind = TargetKind::Official;
    std::string plate;  // "Type" of an official plate
    std::optional<std::array<int, 2>> gridSize;
    std::optional<double> gridSpacing;
    std::optional<double> thickness;
    std::optional<std::array<double, 2>> offset;
    int patterns = 1;  // of an assembly
    bool isInverted = false;
    bool isPlain = false;
};

// What is written. A value given here takes the place of one in a file with parameters.
struct Outputs {
    std::vector<std::string> files;
    std::optional<int> resolution;                    // dots per inch, of formats with pixels
    std::optional<std::array<double, 2>> printScale;  // what a print of 100 % was measured to be, in x and y
    // A name such as "A4", or a size in mm; absent: the smallest of A4 to A0 that holds the pattern.
    std::variant<std::monostate, std::string, std::array<double, 2>> paper;
    bool splitsOverSheets = false;
};

// Each draws the pattern and writes every output, in the order given, a format by its ending. The first output that
// cannot be written ends it; those before it stay. Throws WrongCall if the library refuses a parameter or a
// given file is unusable, and std::runtime_error for everything else that fails.
void drawChoice(const PatternChoice &choice, const Outputs &outputs);

// The same from a file with the command's "Parameters" as JSON, "-" for standard input. Without outputs, the file's own
// "Filename" is written.
void drawParameters(const std::string &file, const Outputs &outputs);

// The same from a pattern file (docs/pattern-file.md), again with the parameters that it lists.
void drawAgain(const std::string &file, const Outputs &outputs);

// The plates of the catalogue as a table, a line for each, with a line of titles.
std::string plateTable();

}  // namespace shell
