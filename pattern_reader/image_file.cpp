#include "pattern_reader/image_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/picture_header.h"

namespace pattern_reader {

namespace {

// OpenCV's colour conversions accept only 8 bits, 16 bits and single precision.
cv::Mat convertible(const cv::Mat &picture) {
    if (picture.depth() == CV_8U || picture.depth() == CV_16U) {
        return picture;
    }
    cv::Mat real;
    picture.convertTo(real, CV_32F);
    return real;
}

double whiteOf(int depth) {
    return depth == CV_8U ? 255 : depth == CV_16U ? 65535 : 1;
}

// Returns what a grey picture with transparency looks like on white paper.
cv::Mat onWhite(const cv::Mat &grey, const cv::Mat &alpha) {
    const double white = whiteOf(grey.depth());
    if (cv::countNonZero(alpha < white) == 0) {
        return grey;
    }
    // white + (grey - white) * alpha / white
    cv::Mat ink;
    cv::subtract(cv::Scalar(white), grey, ink);
    cv::multiply(ink, alpha, ink, 1 / white);
    cv::Mat seen;
    cv::subtract(cv::Scalar(white), ink, seen);
    return seen;
}

cv::Mat oneChannel(const cv::Mat &picture) {
    cv::Mat grey;
    if (picture.channels() == 1) {
        return picture;
    }
    if (picture.channels() == 3) {
        cv::cvtColor(convertible(picture), grey, cv::COLOR_BGR2GRAY);
        return grey;
    }
    if (picture.channels() == 4) {
        const cv::Mat colours = convertible(picture);
        cv::cvtColor(colours, grey, cv::COLOR_BGRA2GRAY);
        cv::Mat alpha;
        cv::extractChannel(colours, alpha, 3);
        return onWhite(grey, alpha);
    }
    cv::extractChannel(picture, grey, 0);
    return grey;
}

// Returns the level that only about one pixel in 2,000 exceeds. A few hot pixels do not change it. If it is 0, returns
// the greatest level in the picture.
float lightestLevel(const cv::Mat &real) {
    std::vector<float> levels;
    levels.reserve(real.total());
    for (int y = 0; y < real.rows; y++) {
        levels.insert(levels.end(), real.ptr<float>(y), real.ptr<float>(y) + real.cols);
    }
    const auto place = levels.end() - 1 - std::ptrdiff_t(levels.size() / 2000);
    std::nth_element(levels.begin(), place, levels.end());
    return *place > 0 ? *place : *std::max_element(place, levels.end());
}

}  // namespace

cv::Mat toGrey(const cv::Mat &picture) {
    cv::Mat grey = oneChannel(picture);
    if (grey.depth() == CV_8U || grey.empty()) {
        return grey;
    }
    cv::Mat real;
    grey.convertTo(real, CV_32F);
    cv::patchNaNs(real, 0);
    real = cv::max(cv::min(real, 1e30F), 0.0F);
    const float lightest = lightestLevel(real);
    cv::Mat scaled;
    real.convertTo(scaled, CV_8U, lightest > 0 ? 255 / double(lightest) : 0);
    return scaled;
}

namespace {

void refuseTooLarge(const std::string &path, const PictureSize &size) {
    if (size.exceeds(std::uint64_t(maximumPixels))) {
        throw std::runtime_error("The picture \"" + path + "\" has " + std::to_string(size.width) + " x " +
                                 std::to_string(size.height) + " pixels; at most " +
                                 std::to_string(maximumPixels / 1000000) + " million can be read.");
    }
}

// JPEG pictures store their luminance separately. Decoding only the luminance takes a third of the time and of the
// memory, and avoids the rounding errors of two colour conversions.
int decoderFlags(std::istream &file) {
    file.clear();
    file.seekg(0);
    const bool isJpeg = file.get() == 0xFF && file.get() == 0xD8;
    return isJpeg ? cv::IMREAD_GRAYSCALE | cv::IMREAD_IGNORE_ORIENTATION : cv::IMREAD_UNCHANGED;
}

// Returns the end of the message about a file that is not a picture.
std::string endOfRefusal(std::istream &file) {
    std::array<char, 4> start{};
    file.clear();
    file.seekg(0);
    file.read(start.data(), start.size());
    const bool isGif = std::string_view(start.data(), start.size()) == "GIF8";
    return isGif ? ": GIF files are not supported; PNG, JPEG, TIFF and PGM are." : ".";
}

}  // namespace

cv::Mat loadGreyImage(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("The file \"" + path + "\" cannot be opened.");
    }
    if (const std::optional<PictureSize> size = declaredSize(file)) {
        refuseTooLarge(path, *size);
    }
    cv::Mat picture;
    try {
        picture = cv::imread(path, decoderFlags(file));
    } catch (const cv::Exception &) {
        // The picture is damaged or too large, which is reported below.
        picture.release();
    }
    if (picture.empty()) {
        throw std::runtime_error("The file \"" + path + "\" is not a picture that can be read" + endOfRefusal(file));
    }
    refuseTooLarge(path, {std::uint64_t(picture.cols), std::uint64_t(picture.rows)});
    return toGrey(picture);
}

}  // namespace pattern_reader
