// The command-line arguments of calibrate_cameras, as texts and as values.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calibration/calibrate.h"
#include "calibration/input/corner_list.h"
#include "calibration/input/photograph_observations.h"
#include "calibration/output/assembly.h"
#include "shell/command_line.h"

namespace calibration {

// The arguments as the user typed them.
struct ArgumentTexts {
    std::vector<std::string> photographs;
    std::vector<std::string> cameras;
    std::vector<std::string> patternFiles;
    std::vector<std::string> cornerLists;
    std::string board;
    std::string imageSize;
    std::string model = "auto";
    std::vector<std::string> measured;
    std::vector<std::string> axes;
};

// The measured lengths of a sheet's two check bars, divided by their lengths in the drawing.
struct MeasuredSheet {
    std::optional<int> number;    // the number of the pattern; may be absent only if there is a single print
    Eigen::Vector2d ratio{1, 1};  // of the bar along x, and of the bar along y
};

struct Arguments {
    ArgumentTexts texts;
    std::string outputFolder;
    std::string report;
    bool isRig = false;
    bool isQuiet = false;
    unsigned jobs = 0;

    std::vector<PhotographFile> photographs;
    std::vector<ListedPhotograph> listed;
    PrintedTarget target;
    std::optional<cv::Size> board;
    std::optional<LensModel> lens;
    std::vector<MeasuredSheet> measured;
    std::optional<AssemblyAxes> axes;
};

void addOptions(shell::CommandLine &line, Arguments &arguments);

// Computes the values from the texts, finds the photographs, and reads pattern files and corner lists. Throws
// std::runtime_error with a sentence that says what is wrong.
void interpret(Arguments &arguments);

}  // namespace calibration
