#include "pattern_reader/image_file.h"

#include <cstdint>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <stdexcept>

#include "pattern_reader/pattern_reader.h"
#include "pattern_reader/picture_size.h"

namespace pattern_reader {

cv::Mat toGrey(const cv::Mat &picture) {
    cv::Mat grey;
    switch (picture.channels()) {
        case 1:
            grey = picture;
            break;
        case 3:
        case 4: {
            // The conversion knows 8 and 16 bits and single precision.
            cv::Mat convertible = picture;
            if (picture.depth() != CV_8U && picture.depth() != CV_16U) {
                picture.convertTo(convertible, CV_32F);
            }
            cv::cvtColor(convertible, grey, picture.channels() == 3 ? cv::COLOR_BGR2GRAY : cv::COLOR_BGRA2GRAY);
            break;
        }
        default:
            cv::extractChannel(picture, grey, 0);
    }
    if (grey.depth() == CV_8U) {
        return grey;
    }
    cv::Mat real;
    grey.convertTo(real, CV_32F);
    cv::patchNaNs(real, 0);
    real = cv::max(cv::min(real, 1e30F), 0.0F);
    double greatest = 0;
    cv::minMaxLoc(real, nullptr, &greatest);
    cv::Mat scaled;
    real.convertTo(scaled, CV_8U, greatest > 0 ? 255 / greatest : 0);
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
        picture = cv::imread(path, cv::IMREAD_UNCHANGED);
    } catch (const cv::Exception &) {
        // A damaged or enormous picture; said below.
        picture.release();
    }
    if (picture.empty()) {
        throw std::runtime_error("The file \"" + path + "\" is not a picture that can be read.");
    }
    refuseTooLarge(path, {std::uint64_t(picture.cols), std::uint64_t(picture.rows)});
    return toGrey(picture);
}

}  // namespace pattern_reader
