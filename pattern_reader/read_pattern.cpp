// read_pattern [--draw OUT.png] IMAGE...
//
// Reads the patterns in pictures and prints one JSON document. Ends with 1 when a picture cannot be read, with 2 when
// it is called wrongly.
#include <exception>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "pattern_reader/image_file.h"
#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/reading_json.h"
#include "pattern_reader/reading_picture.h"

namespace {

using nlohmann::ordered_json;

constexpr const char *usage =
    "usage: read_pattern [--draw OUT.png] IMAGE...\n"
    "Prints the coded patterns found in the pictures as one JSON document.\n"
    "--draw writes the picture, one only, with what was found drawn into it.\n";

struct Arguments {
    std::vector<std::string> images;
    std::string drawing;
};

bool parse(int count, char **values, Arguments &arguments) {
    bool optionsEnded = false;
    for (int i = 1; i < count; i++) {
        const std::string value = values[i];
        if (!optionsEnded && value == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && value == "--draw") {
            if (++i == count) {
                return false;
            }
            arguments.drawing = values[i];
        } else if (!optionsEnded && value.size() > 1 && value[0] == '-') {
            return false;
        } else {
            arguments.images.push_back(value);
        }
    }
    return !arguments.images.empty() && (arguments.drawing.empty() || arguments.images.size() == 1);
}

void draw(const cv::Mat &image, const std::vector<pattern_reader::PatternReading> &readings, const std::string &path) {
    bool written = false;
    try {
        written = cv::imwrite(path, pattern_reader::drawReadings(image, readings));
    } catch (const cv::Exception &) {
        // A file name ending that names no kind of picture.
        written = false;
    }
    if (!written) {
        throw std::runtime_error("The drawing \"" + path + "\" cannot be written.");
    }
}

ordered_json readImage(const std::string &path, const std::string &drawing) {
    const cv::Mat image = pattern_reader::loadGreyImage(path);
    const auto readings = pattern_reader::readPatterns(image);
    ordered_json json;
    json["file"] = path;
    json["width"] = image.cols;
    json["height"] = image.rows;
    json["patterns"] = ordered_json::array();
    for (const auto &reading : readings) {
        json["patterns"].push_back(pattern_reader::toJson(reading));
    }
    if (!drawing.empty()) {
        draw(image, readings, drawing);
    }
    return json;
}

}  // namespace

int main(int count, char **values) {
    Arguments arguments;
    if (!parse(count, values, arguments)) {
        std::cerr << usage;
        return 2;
    }
    int code = 0;
    ordered_json document;
    document["format"] = "pattern-readings";
    document["version"] = 1;
    document["images"] = ordered_json::array();
    for (const std::string &path : arguments.images) {
        try {
            document["images"].push_back(readImage(path, arguments.drawing));
        } catch (const std::exception &error) {
            std::cerr << "read_pattern: " << error.what() << '\n';
            document["images"].push_back({{"file", path}, {"error", error.what()}});
            code = 1;
        }
    }
    // File names need not be valid UTF-8; what is not is replaced.
    std::cout << document.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
    return code;
}
