// What the user asks calibrate_cameras for.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "calibration/calibrate.h"
#include "calibration/input/corner_list.h"
#include "calibration/input/photograph_observations.h"
#include "calibration/output/assembly.h"

namespace calibration {

// As they were given.
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

// A check bar's measured length and its length in the drawing, in x and y.
struct MeasuredSheet {
    std::optional<int> number;  // of the pattern; the first print if there is none
    Eigen::Vector2d ratio{1, 1};
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

void addOptions(CLI::App &app, Arguments &arguments);

// Fills in what follows from the texts, and reads pattern files and corner lists. Throws std::runtime_error with a
// sentence that says what is wrong.
void interpret(Arguments &arguments);

}  // namespace calibration
