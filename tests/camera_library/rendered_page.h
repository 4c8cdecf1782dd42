// Renders a page of a PDF with pdftoppm.
#pragma once

#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>

#include "tests/camera_library/temporary_folder.h"

// Runs a command in the shell, and returns what it writes to standard output and standard error. Throws
// std::runtime_error if the command fails.
inline std::string outputOf(const std::string &command) {
    FILE *pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error("cannot run " + command);
    }
    std::string output;
    for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) {
        output += static_cast<char>(c);
    }
    if (pclose(pipe) != 0) {
        throw std::runtime_error(command + " failed: " + output);
    }
    return output;
}

// Returns a page in 8-bit grey. Pages count from 1. `crop` is a rectangle in pixels from the page's top left corner;
// if it is empty, the whole page is rendered.
inline cv::Mat renderPage(const std::string &pdf, int page, double dotsPerInch, cv::Rect crop = {}) {
    const TemporaryFolder folder;
    std::string command = "pdftoppm -gray -singlefile -r " + std::to_string(dotsPerInch) + " -f " +
                          std::to_string(page) + " '" + pdf + "' '" + folder.file("page") + "'";
    if (!crop.empty()) {
        command += " -x " + std::to_string(crop.x) + " -y " + std::to_string(crop.y) + " -W " +
                   std::to_string(crop.width) + " -H " + std::to_string(crop.height);
    }
    outputOf(command);
    return cv::imread(folder.file("page.pgm"), cv::IMREAD_GRAYSCALE);
}
