// read_pattern [OPTIONS] IMAGE...
//
// Reads the patterns in pictures and prints one JSON document, or one line of JSON per picture. The exit codes are
// those of shell/program_run.h.
#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/photograph.h"
#include "pattern_reader/printed_pattern.h"
#include "pattern_reader/reading_json.h"
#include "pattern_reader/reading_picture.h"
#include "shell/program_run.h"
#include "shell/standard_streams.h"

namespace {

using nlohmann::ordered_json;
using pattern_reader::PatternReading;

struct Arguments {
    std::vector<std::string> images;
    std::vector<std::string> patternFiles;
    std::string drawing;
    std::string board;
    double square = 0;
    double gridSpacing = 0;
    bool lines = false;
    unsigned jobs = 0;

    pattern_reader::ReadingOptions options;
    std::vector<pattern_reader::PrintedPattern> patterns;
};

void addOptions(shell::CommandLine &line, Arguments &arguments) {
    line.add("IMAGE", arguments.images, "Pictures: PNG, JPEG, TIFF or PGM").required();
    line.add("--pattern", arguments.patternFiles,
             "JSON or PDF file of the printed patterns, written by LmCalTab or draw_pattern; the output then also "
             "contains the corners in millimetres; may be repeated")
        .typeName("FILE")
        .oneValueEachTime();
    line.add(
            "--grid-spacing", arguments.gridSpacing,
            "Grid spacing of the patterns that do not encode their own grid spacing; the output then also contains the "
            "corners in millimetres")
        .typeName("MM")
        .positive();
    line.add("--board", arguments.board, "Also reads plain checkerboards with this many inner corners, for example 9x6")
        .typeName("CxR");
    line.add("--square", arguments.square, "Side of a plain checkerboard's square")
        .typeName("MM")
        .positive()
        .needs("--board");
    line.add("--draw", arguments.drawing,
             "Writes a copy of the picture with the results drawn into it; takes only one picture")
        .typeName("OUT.png");
    line.addFlag("--lines", arguments.lines, "Prints a line of JSON for each picture as soon as it is read");
    line.add("--jobs", arguments.jobs, "Number of pictures to read at the same time; 0 means one picture per processor")
        .typeName("N");
    line.addVersion("read_pattern " LMCALTAB_VERSION);
    line.setFooter(
        "Examples:\n"
        "  read_pattern photo.jpg\n"
        "  read_pattern --pattern target.json --lines photos/*.jpg\n"
        "  read_pattern --board 9x6 --square 25 --draw found.png photo.jpg");
}

cv::Size parseBoard(const std::string &text) {
    cv::Size board;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%dx%d%c", &board.width, &board.height, &rest) != 2 ||
        std::min(board.width, board.height) < 3 || std::max(board.width, board.height) > 1000) {
        throw shell::WrongCall("--board: \"" + text +
                               "\" is not a size such as 9x6, with 3 to 1000 corners on each side");
    }
    return board;
}

// Interprets the options. Throws an exception that describes what is wrong with them.
void interpret(Arguments &arguments) {
    if (!arguments.board.empty()) {
        arguments.options.board = parseBoard(arguments.board);
    }
    for (const std::string &file : arguments.patternFiles) {
        try {
            for (pattern_reader::PrintedPattern &pattern : pattern_reader::loadPrintedPatterns(file)) {
                arguments.patterns.push_back(std::move(pattern));
            }
        } catch (const std::runtime_error &error) {
            throw shell::WrongCall(error.what());
        }
    }
    if (arguments.drawing.empty()) {
        return;
    }
    if (arguments.images.size() != 1) {
        throw shell::WrongCall("--draw takes only one picture");
    }
    namespace fs = std::filesystem;
    std::error_code absent;
    if (fs::equivalent(fs::u8path(arguments.drawing), fs::u8path(arguments.images.front()), absent)) {
        throw shell::WrongCall("--draw would replace the picture \"" + arguments.images.front() + "\"");
    }
}

// Writes the drawing. If that is not possible, prints a message and returns false.
bool draw(const cv::Mat &image, const std::vector<PatternReading> &readings, const std::string &path) {
    bool written = false;
    try {
        written = cv::imwrite(path, pattern_reader::drawReadings(image, readings));
    } catch (const cv::Exception &) {
        // OpenCV knows no picture format with this file name extension.
        written = false;
    }
    if (!written) {
        shell::writeError("read_pattern: The drawing \"" + path + "\" cannot be written.\n");
    }
    return written;
}

// Returns the corners in millimetres: from a pattern file if one fits, otherwise from the grid spacing in the pattern's
// information block, otherwise from the options.
std::optional<std::vector<cv::Point3d>> objectPoints(const PatternReading &reading, const Arguments &arguments) {
    if (auto points = pattern_reader::objectPoints(reading, arguments.patterns)) {
        return points;
    }
    double gridSpacing = arguments.gridSpacing;
    if (reading.kind == pattern_reader::PatternKind::Board) {
        gridSpacing = 2 * arguments.square;
    } else if (reading.values && reading.values->gridSpacing) {
        gridSpacing = *reading.values->gridSpacing;
    }
    return gridSpacing > 0 ? std::optional(pattern_reader::objectPoints(reading, gridSpacing)) : std::nullopt;
}

// Returns one picture's entry in the document. `succeeded` becomes false if the picture cannot be read or drawn.
ordered_json readImage(const std::string &path, const Arguments &arguments, bool &succeeded) {
    ordered_json json;
    json["file"] = path;
    try {
        const pattern_reader::Photograph photograph = pattern_reader::loadPhotograph(path);
        const auto readings = pattern_reader::readPhotograph(photograph, arguments.options);
        json["width"] = photograph.grey.cols;
        json["height"] = photograph.grey.rows;
        json["orientation"] = photograph.orientation;
        if (photograph.truncated) {
            json["truncated"] = true;
        }
        json["patterns"] = ordered_json::array();
        for (const PatternReading &reading : readings) {
            const auto points = objectPoints(reading, arguments);
            json["patterns"].push_back(pattern_reader::toJson(reading, points ? &*points : nullptr));
        }
        succeeded = arguments.drawing.empty() || draw(photograph.grey, readings, arguments.drawing);
    } catch (const std::exception &error) {
        shell::writeError(std::string("read_pattern: ") + error.what() + "\n");
        json["error"] = error.what();
        succeeded = false;
    }
    return json;
}

// File names need not be valid UTF-8; invalid bytes are replaced.
std::string text(const ordered_json &json, int indent) {
    return json.dump(indent, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

// Reads all pictures, several at a time, and prints the results. False if something failed.
bool readAll(const Arguments &arguments) {
    const unsigned processors = std::max(1U, std::thread::hardware_concurrency());
    const size_t jobs = std::min<size_t>(arguments.jobs != 0 ? arguments.jobs : processors, arguments.images.size());
    if (jobs > 1) {
        cv::setNumThreads(1);
    }
    std::vector<ordered_json> entries(arguments.images.size());
    std::atomic<size_t> next{0};
    std::atomic<bool> allSucceeded{true};
    std::mutex output;
    const auto work = [&] {
        for (size_t i = next++; i < entries.size(); i = next++) {
            bool succeeded = false;
            entries[i] = readImage(arguments.images[i], arguments, succeeded);
            if (!succeeded) {
                allSucceeded = false;
            }
            if (arguments.lines) {
                const std::lock_guard lock(output);
                std::cout << text(entries[i], -1) << std::flush;
                entries[i].clear();
            }
        }
    };
    std::vector<std::thread> threads;
    for (size_t i = 1; i < jobs; i++) {
        threads.emplace_back(work);
    }
    work();
    for (std::thread &thread : threads) {
        thread.join();
    }
    if (!arguments.lines) {
        ordered_json document;
        document["format"] = "pattern-readings";
        document["version"] = 1;
        document["images"] = std::move(entries);
        std::cout << text(document, 2);
    }
    return allSucceeded;
}

}  // namespace

int main(int count, char **values) {
    Arguments arguments;
    shell::CommandLine line("read_pattern", "Finds calibration patterns in pictures and prints them as JSON.");
    addOptions(line, arguments);
    return shell::runProgram(line, count, values, [&] {
        interpret(arguments);
        return readAll(arguments);
    });
}
