// calibrate_cameras [OPTIONS] --out FOLDER PHOTO...
//
// Calibrates cameras and assemblies of patterns from photographs. The exit code is 0 if a calibration was written. It
// is also 0 if only --help or --version was asked for. It is 2 if the arguments are wrong. It is 1 if no calibration
// was written or if standard output could not be written; in the second case, the files of the calibration may be
// complete.
#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "calibration/command_line/arguments.h"
#include "calibration/command_line/terminal.h"
#include "calibration/input/photograph_reading.h"
#include "calibration/output/result_files.h"
#include "calibration/report/report_page.h"
#include "shell/program_run.h"
#include "shell/standard_streams.h"

namespace {

using calibration::Arguments;
using calibration::Calibration;
using calibration::CollectedObservations;

constexpr const char *program = "calibrate_cameras " LMCALTAB_VERSION;

// A line on standard error that shows the latest text. It is shown only if standard error is a terminal and the program
// is not told to be quiet.
class Progress {
public:
    explicit Progress(bool isQuiet) : isShown(!isQuiet && isErrorTerminal()) {}
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    ~Progress() { show(""); }

    void show(const std::string &text) {
        if (isShown && text != last) {
            const size_t width = std::max(last.size(), text.size());
            shell::writeError('\r' + text + std::string(width - text.size(), ' ') + '\r');
            last = text;
        }
    }

private:
    bool isShown;
    std::string last;
};

void message(const std::string &text) {
    shell::writeError("calibrate_cameras: " + text + "\n");
}

// Formats a number with a fixed number of decimal places.
std::string fixed(double number, int digits) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", digits, number);
    return text.data();
}

struct Input {
    CollectedObservations collected;
    std::map<std::string, std::string> thumbnails;  // by the photograph's name
};

Input readInput(const Arguments &arguments, Progress &progress) {
    Input input;
    if (!arguments.listed.empty()) {
        const calibration::ListedBoard board{arguments.board->width, arguments.board->height, arguments.target.square};
        input.collected = calibration::collectObservations(arguments.listed, board, arguments.isRig);
        return input;
    }
    calibration::PhotographsOptions options;
    options.reading.board = arguments.board;
    options.jobs = arguments.jobs;
    options.makeThumbnails = !arguments.report.empty();
    const std::string all = std::to_string(arguments.photographs.size());
    options.onPhotograph = [&](size_t, const calibration::ReadPhotograph &, size_t done) {
        progress.show("Reading photographs: " + std::to_string(done) + " of " + all);
    };
    auto photographs = calibration::readPhotographs(arguments.photographs, options);
    input.collected = calibration::collectObservations(photographs, arguments.target, arguments.isRig);
    for (calibration::ReadPhotograph &photograph : photographs) {
        input.thumbnails.emplace(photograph.file.path, std::move(photograph.thumbnail));
    }
    return input;
}

std::string textOf(calibration::Stage stage) {
    switch (stage) {
        case calibration::Stage::StartValues:
            return "Finding start values";
        case calibration::Stage::ChoosingModels:
            return "Choosing models";
        case calibration::Stage::Solving:
            return "Solving";
        case calibration::Stage::JudgingTrust:
            return "Judging the result";
    }
    return {};
}

int printOf(const calibration::MeasuredSheet &sheet, const calibration::Observations &observations) {
    std::vector<int> prints;
    for (size_t i = 0; i < observations.prints.size(); i++) {
        if (!sheet.number || observations.prints[i].number == *sheet.number) {
            prints.push_back(int(i));
        }
    }
    if (prints.empty()) {
        throw std::runtime_error("--measured: no photograph that is used shows pattern " +
                                 std::to_string(sheet.number.value_or(0)) + ".");
    }
    if (prints.size() > 1 && sheet.number) {
        throw std::runtime_error("--measured: several patterns have the number " + std::to_string(*sheet.number) + ".");
    }
    if (prints.size() > 1) {
        throw std::runtime_error(
            "--measured: there are several patterns. Put the number of the measured one before its lengths, as in "
            "3=99.7x100.1. A pattern without a number can be measured only if it is the only pattern.");
    }
    return prints.front();
}

Calibration solve(const Arguments &arguments, const calibration::Observations &observations, Progress &progress) {
    calibration::CalibrateOptions options;
    options.lens = arguments.lens;
    options.onProgress = [&](calibration::Stage stage, double share) {
        progress.show(textOf(stage) + ": " + fixed(100 * share, 0) + " %");
    };
    for (const calibration::MeasuredSheet &sheet : arguments.measured) {
        if (!observations.prints.empty()) {
            options.measured.push_back({printOf(sheet, observations), sheet.ratio});
        }
    }
    return calibration::calibrate(observations, options);
}

// Prints what the calibration does not use, and why. `result` is null if there is no calibration.
void printLosses(const CollectedObservations &collected, const Calibration *result) {
    for (const calibration::UnusedPhotograph &unused : collected.unused) {
        message(unused.name + ": " + unused.reason);
    }
    for (const std::string &notice : collected.notices) {
        message(notice);
    }
    if (result == nullptr) {
        return;
    }
    for (const calibration::LeftOut &leftOut : result->leftOut) {
        const auto &sighting = result->observations.sightings[size_t(leftOut.sighting)];
        message(result->observations.photographs[size_t(sighting.photograph)].name + ": " + leftOut.reason);
    }
}

void printResult(const Calibration &result) {
    std::cout << result.verdict.text << "\n";
    for (const std::string &advice : result.verdict.advice) {
        std::cout << "- " << advice << "\n";
    }
    for (size_t i = 0; i < result.cameras.size(); i++) {
        const calibration::Camera &camera = result.observations.cameras[i];
        const calibration::CameraTrust &trust = result.cameras[i];
        const Eigen::VectorXd &intrinsics = result.estimate.intrinsics[i];
        if (trust.corners == 0) {
            continue;
        }
        std::cout << camera.name << ": " << nameOf(camera.lens) << ", focal length " << fixed(intrinsics[0], 2) << " x "
                  << fixed(intrinsics[1], 2) << " px, centre " << fixed(intrinsics[2], 2) << ", "
                  << fixed(intrinsics[3], 2) << " px, residual " << fixed(trust.rms, 3) << " px, " << trust.photographs
                  << " photographs, " << trust.corners << " corners\n";
    }
    for (const std::string &notice : result.notices) {
        std::cout << notice << "\n";
    }
}

// Puts "./" before a file name without a folder. Otherwise, writeResultFiles would write the file to the folder of the
// results instead of the current folder.
std::string reportPath(const std::string &path) {
    return std::filesystem::u8path(path).has_parent_path() ? path : "./" + path;
}

calibration::ResultFile reportFile(const Arguments &arguments, const Calibration &result, Input &input) {
    calibration::ReportInput report;
    for (const calibration::Photograph &photograph : result.observations.photographs) {
        report.thumbnails.push_back(input.thumbnails[photograph.name]);
    }
    for (const calibration::UnusedPhotograph &unused : input.collected.unused) {
        report.unread.push_back({unused.name, unused.reason});
    }
    return {reportPath(arguments.report), calibration::reportPage(result, report)};
}

void writeFiles(const Arguments &arguments, const Calibration &result, Input &input) {
    const calibration::ResultNotes notes{input.collected.unused, input.collected.notices, arguments.axes, program};
    calibration::ResultFiles files = calibration::resultFiles(result, notes);
    std::string written = "Written to \"" + arguments.outputFolder + "\":";
    for (const calibration::ResultFile &file : files.files) {
        written += " " + file.name;
    }
    if (!arguments.report.empty()) {
        files.files.push_back(reportFile(arguments, result, input));
        written += "\nWritten to \"" + arguments.report + "\".";
    }
    calibration::writeResultFiles(arguments.outputFolder, files.files);
    if (arguments.isQuiet) {
        return;
    }
    for (const std::string &omission : files.omissions) {
        std::cout << omission << "\n";
    }
    std::cout << written << "\n";
}

// Reads the input, calibrates and writes the files. If something fails, throws an exception whose text is a sentence.
void run(const Arguments &arguments) {
    Progress progress(arguments.isQuiet);
    Input input = readInput(arguments, progress);
    std::optional<Calibration> result;
    try {
        result = solve(arguments, input.collected.observations, progress);
    } catch (...) {
        progress.show("");
        printLosses(input.collected, nullptr);
        throw;
    }
    progress.show("");
    if (!arguments.isQuiet) {
        printLosses(input.collected, &*result);
        printResult(*result);
    }
    writeFiles(arguments, *result, input);
}

// Returns false if no calibration was written, and says why on standard error.
bool calibrateOrReport(const Arguments &arguments) {
    try {
        run(arguments);
        return true;
    } catch (const std::exception &error) {
        message(error.what());
        message("No calibration was written.");
        return false;
    }
}

}  // namespace

int main(int count, char **values) {
    Arguments arguments;
    shell::CommandLine line("calibrate_cameras", "Calibrates cameras and assemblies of patterns from photographs.");
    calibration::addOptions(line, arguments);
    return shell::runProgram(line, count, values, [&arguments] {
        try {
            calibration::interpret(arguments);
        } catch (const std::exception &error) {
            throw shell::WrongCall(error.what());
        }
        return calibrateOrReport(arguments);
    });
}
