// Draws the frame that all figures of a camera's picture have in common, and interpolates between colours.
#pragma once

#include <Eigen/Core>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "calibration/calibrate.h"
#include "calibration/report/drawing.h"

namespace calibration {

constexpr double figureWidth = 600;

// The frame of a camera's picture. It has the shape of the picture, and its longer side is `figureWidth` long.
class PictureFrame {
public:
    explicit PictureFrame(const Camera &camera, double legendHeight = 0)
        : width(std::max(camera.width, 1)), height(std::max(camera.height, 1)), scale(figureWidth / width) {
        scale = std::min(scale, figureWidth / height);
        legend = legendHeight;
    }

    // Returns the place of a pixel in the figure.
    Eigen::Vector2d operator()(const Eigen::Vector2d &pixel) const {
        return (pixel + Eigen::Vector2d(0.5, 0.5)) * scale;
    }
    Eigen::Vector2d size() const { return Eigen::Vector2d(width, height) * scale; }
    double unitsPerPixel() const { return scale; }

    Drawing start(const std::string &label) const {
        Drawing drawing(size().x(), size().y() + legend, label);
        Path border;
        border.rectangle(0, 0, size().x(), size().y());
        drawing.add("paper", border);
        return drawing;
    }

    void outline(Drawing &drawing) const {
        Path border;
        border.rectangle(0, 0, size().x(), size().y());
        drawing.add("frame", border);
    }

private:
    double width, height, scale, legend = 0;
};

// Interpolates between the colours of `ramp` and returns the result as a text "#rrggbb". A share of 0 gives the first
// colour of the ramp, and a share of 1 gives the last.
template <size_t size>
std::string colourAt(const std::array<Eigen::Vector3d, size> &ramp, double share) {
    const double place = std::clamp(share, 0.0, 1.0) * double(size - 1);
    const size_t first = std::min(size_t(place), size - 2);
    const Eigen::Vector3d colour = ramp[first] + (place - double(first)) * (ramp[first + 1] - ramp[first]);
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", unsigned(std::lround(colour[0])),
                  unsigned(std::lround(colour[1])), unsigned(std::lround(colour[2])));
    return text.data();
}

}  // namespace calibration
