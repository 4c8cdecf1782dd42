#include "bench/reader/exposure.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/reader/optics.h"

namespace reader_bench {

namespace {

void shade(cv::Mat &image, const Exposure &exposure) {
    for (int y = 0; y < image.rows; y++) {
        auto *row = image.ptr<float>(y);
        for (int x = 0; x < image.cols; x++) {
            const Light light = lightAt(exposure, image.size(), cv::Point2d(x, y));
            row[x] = float(row[x] * light.share + light.reflected);
        }
    }
}

void putInFront(cv::Mat &image, const Obstacle &obstacle) {
    constexpr int fractionBits = 6;
    std::vector<cv::Point> outline;
    for (const cv::Point2d &p : obstacle.outline) {
        outline.emplace_back(p * double(1 << fractionBits));
    }
    cv::Mat mask(image.size(), CV_8U, cv::Scalar(0));
    cv::fillPoly(mask, std::vector<std::vector<cv::Point>>{outline}, cv::Scalar(255), cv::LINE_AA, fractionBits);
    for (int y = 0; y < image.rows; y++) {
        const auto *covered = mask.ptr<uchar>(y);
        auto *row = image.ptr<float>(y);
        for (int x = 0; x < image.cols; x++) {
            if (covered[x] != 0) {
                // Skin and cloth are not uniform.
                const double level = obstacle.level * (1 + 0.08 * std::sin(0.13 * x + 0.05 * y));
                row[x] += float(covered[x] / 255.0 * (level - row[x]));
            }
        }
    }
}

void addNoise(cv::Mat &image, const Exposure &exposure, std::mt19937 &random) {
    if (exposure.noiseSigma <= 0 && exposure.shotNoise <= 0) {
        return;
    }
    cv::RNG source(random());
    cv::Mat noise(image.size(), CV_32F);
    source.fill(noise, cv::RNG::NORMAL, 0, 1);
    const auto readVariance = float(exposure.noiseSigma * exposure.noiseSigma);
    const auto shot = float(exposure.shotNoise);
    for (int y = 0; y < image.rows; y++) {
        const auto *from = noise.ptr<float>(y);
        auto *row = image.ptr<float>(y);
        for (int x = 0; x < image.cols; x++) {
            row[x] += from[x] * std::sqrt(readVariance + shot * std::max(0.0F, row[x]));
        }
    }
}

// Returns the colour of a pixel of the sensor: 0 for blue, 1 for green, 2 for red. In each square of 2 x 2 pixels, the
// first row is blue and green, and the second row is green and red. OpenCV names this order RG, because the second and
// the third pixel of the picture's second row are red and green.
int colourAt(int x, int y) {
    return x % 2 + y % 2;
}

// Applies the sensor's colour filters. The scene is grey, so each pixel is only multiplied by the factor in `cast` for
// the pixel's own colour.
void filterColours(cv::Mat &image, const cv::Vec3d &cast) {
    for (int y = 0; y < image.rows; y++) {
        auto *row = image.ptr<float>(y);
        for (int x = 0; x < image.cols; x++) {
            row[x] *= float(cast[colourAt(x, y)]);
        }
    }
}

// Applies the white balance and interpolates the missing colours. The colours are interpolated in 16 bits, with 256
// steps per grey level. The result has three channels of 32-bit float.
cv::Mat demosaic(cv::Mat mosaic, const Exposure &exposure) {
    const cv::Vec3d error(1 + exposure.balanceError, 1, 1 - exposure.balanceError);
    for (int y = 0; y < mosaic.rows; y++) {
        auto *row = mosaic.ptr<float>(y);
        for (int x = 0; x < mosaic.cols; x++) {
            const int colour = colourAt(x, y);
            row[x] = std::min(row[x], 255.0F) * float(error[colour] / exposure.cast[colour]);
        }
    }
    cv::Mat raw;
    mosaic.convertTo(raw, CV_16U, 256);
    cv::Mat colours;
    cv::cvtColor(raw, colours, cv::COLOR_BayerRG2BGR);
    colours.convertTo(colours, CV_32F, 1 / 256.0);
    return colours;
}

// Applies the camera's tone curve, if it has one: amplifies the levels, clips them and applies the gamma. The image has
// one or three channels.
void bendTones(cv::Mat &image, const Exposure &exposure) {
    if (exposure.toneGain == 1 && exposure.toneGamma == 1) {
        return;
    }
    image = cv::max(image * (exposure.toneGain / 255), 0.0);
    image = cv::min(image, 1.0);
    cv::pow(image, 1 / exposure.toneGamma, image);
    image *= 255;
}

void sharpen(cv::Mat &image, const Exposure &exposure) {
    if (exposure.sharpening <= 0) {
        return;
    }
    cv::Mat smooth;
    cv::GaussianBlur(image, smooth, {}, exposure.sharpeningSigma);
    image += exposure.sharpening * (image - smooth);
}

}  // namespace

Light lightAt(const Exposure &exposure, const cv::Size &picture, const cv::Point2d &at) {
    const double u = (at.x - picture.width / 2.0) / picture.width;
    const double v = (at.y - picture.height / 2.0) / picture.height;
    Light light;
    light.share = 1 + exposure.lightSlope.x * u + exposure.lightSlope.y * v - exposure.vignette * 2 * (u * u + v * v);
    for (const Shadow &shadow : exposure.shadows) {
        const double depth = (at - shadow.edge).dot(shadow.side) / shadow.penumbra;
        light.share *= 1 - shadow.depth * std::clamp(0.5 + depth, 0.0, 1.0);
    }
    for (const Glare &glare : exposure.glares) {
        const cv::Point2d d = (at - glare.centre) / glare.radius;
        const double r2 = d.dot(d);
        light.reflected += r2 < 30 ? glare.strength * std::exp(-r2 / 2) : 0;
    }
    return light;
}

cv::Mat expose(const cv::Mat &irradiance, const Exposure &exposure, std::mt19937 &random) {
    cv::Mat image = irradiance.clone();
    shade(image, exposure);
    for (const Obstacle &obstacle : exposure.obstacles) {
        putInFront(image, obstacle);
    }
    if (exposure.blurSigma > 0) {
        cv::GaussianBlur(image, image, cv::Size(), exposure.blurSigma, exposure.blurSigma, cv::BORDER_REPLICATE);
    }
    defocus(image, exposure.defocusRadius, exposure.defocusSlope);
    moveDuringExposure(image, exposure.motion);
    if (exposure.bayer) {
        filterColours(image, exposure.cast);
    }
    addNoise(image, exposure, random);
    if (exposure.bayer) {
        image = demosaic(image, exposure);
    }
    bendTones(image, exposure);
    sharpen(image, exposure);
    cv::Mat picture;
    image.convertTo(picture, CV_8U);
    if (exposure.jpegQuality > 0) {
        std::vector<uchar> bytes;
        cv::imencode(".jpg", picture, bytes, {cv::IMWRITE_JPEG_QUALITY, exposure.jpegQuality});
        picture = cv::imdecode(bytes, exposure.bayer ? cv::IMREAD_COLOR : cv::IMREAD_GRAYSCALE);
    }
    return picture;
}

}  // namespace reader_bench
