// Fills in the parameters of the library's command "GenerateCalibrationPattern" from the command line, and runs the
// command once for each output. The library checks every value; its error texts reach the user unchanged.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace shell {

// The kinds of target. Their names are those of the pages in the program's window.
enum class TargetKind { Official, Custom, Flexible, Assembly, Halcon };

// The pattern to draw. Lengths are in millimetres. If a value is absent, the library uses its default. If there is no
// default, the library refuses the pattern.
struct PatternChoice {
    TargetKind kind = TargetKind::Official;
    std::string plate;  // "Type" of an official plate
    std::optional<std::array<int, 2>> gridSize;
    std::optional<double> gridSpacing;
    std::optional<double> thickness;
    std::optional<std::array<double, 2>> offset;
    int patterns = 1;         // how many patterns of an assembly to draw, from pattern 0 on
    bool isInverted = false;  // dark and light are exchanged
    bool isPlain = false;     // the pattern has no code
};

// The files to write, and how they are drawn. A value given here replaces the value in the input file, if there is one.
struct Outputs {
    std::vector<std::string> files;
    std::optional<int> resolution;                    // dots per inch, for formats with pixels
    std::optional<std::array<double, 2>> printScale;  // measured / true length of a print at 100 %, in x and y
    // A name such as "A4", or a size in mm. If absent, the paper that the input file names is used. If there is no
    // input file or it names no paper, the library takes the smallest of A4 to A0 that holds the pattern, or a custom
    // size if none does.
    std::variant<std::monostate, std::string, std::array<double, 2>> paper;
    bool splitsOverSheets = false;
};

// Draws the patterns and writes every output in the given order. The ending of an output's name selects its format. If
// an output cannot be written, earlier outputs stay and later ones are not tried. Throws WrongCall if there is no file
// to write, if the library refuses a parameter or if an input file cannot be used, and std::runtime_error for all other
// failures.
void drawChoice(const PatternChoice &choice, const Outputs &outputs);

// Does the same as drawChoice with parameters from a JSON file; "-" is standard input. The file's object becomes the
// command's "Parameters". If `outputs` has no files, the object's "Filename" is the file to write.
void drawParameters(const std::string &file, const Outputs &outputs);

// Draws the patterns of a pattern file (docs/pattern-file.md) again, with the parameters with which the file was made.
// Outputs and errors are as for drawChoice.
void drawAgain(const std::string &file, const Outputs &outputs);

// Returns the plates of the catalogue as a table with a line of titles and one line for each plate.
std::string plateTable();

}  // namespace shell
