// Takes the pixels of a disc around a corner and compares them with the model of four blurred areas (corner_fit.h).
//
// Pixels are kept as lists, one value for each pixel, so that the loops over them can be vectorised. The disc is
// symmetric: pixel i and pixel count() - 1 - i are opposite each other. The lists are padded to a multiple of
// `lanes`. The errors and the slopes (see compare) are padded with zeros.
#pragma once

#include <array>
#include <cstddef>
#include <opencv2/core.hpp>

#include "pattern_reader/corner_fit.h"

namespace pattern_reader {

class CornerWindow {
public:
    static constexpr float largestRadius = 16;  // pixels
    static constexpr std::size_t lanes = 8;

    // The model's parameters. A fit varies all of them or a part. If the position is varied, its two parameters come
    // last, because NormalEquations (corner_fit.cpp) needs them there.
    enum Parameter : std::size_t {
        Middle,
        Amplitude,
        Blur,
        MiddleSlopeX,
        MiddleSlopeY,
        AmplitudeSlopeX,
        AmplitudeSlopeY,
        PositionX,
        PositionY,
        ParameterCount
    };

    // Takes those pixels of a disc around the fit's position that are at most `reach` pixels from one of the two
    // borders, and whose grey level is not affected by a mark. The radius is limited to largestRadius. If the lists
    // have no room for all these pixels, the disc is made smaller. False if the disc reaches beyond the picture.
    bool take(const cv::Mat &picture, const CornerBorders &borders, const CornerFit &fit, float radius, float reach);
    // Compares the pixels with the model. Sets the errors and the slopes. A slope is the derivative of the model's grey
    // level at a pixel with respect to one parameter.
    void compare(const CornerBorders &borders, const CornerFit &fit);
    // Sets the errors to those that would remain after the parameters change by `step`, according to the slopes.
    void predictErrors(const std::array<double, ParameterCount> &step);

    std::size_t count() const { return pixelCount; }
    // The picture's grey level minus the model's.
    float error(std::size_t pixel) const { return errors[pixel]; }
    // Sums of products over all pixels.
    float sumOfSlopes(Parameter a, Parameter b) const { return sum(slopes[a], slopes[b]); }
    float sumOfErrors(Parameter a) const { return sum(slopes[a], errors); }
    float sumOfSquares() const { return sum(errors, errors); }

private:
    static constexpr std::size_t capacity = 960;  // pixels, a multiple of lanes
    using List = std::array<float, capacity>;

    bool gather(const cv::Mat &picture, const CornerBorders &borders, const CornerFit &fit, float radius, float reach);
    float sum(const List &a, const List &b) const;

    std::size_t pixelCount = 0;
    std::size_t filled = 0;  // pixelCount rounded up to a multiple of lanes
    List x, y;               // pixel coordinates
    List grey;
    List errors;
    std::array<List, ParameterCount> slopes;
};

}  // namespace pattern_reader
