// Turns a scene under even light into a picture. It adds shadows and reflections, objects in front of the scene,
// blur, the sensor's colours and noise, and the camera's own processing of the picture.
//
// Positions are image coordinates in pixels. Levels are grey levels from 0 to 255, proportional to the light until the
// tone curve is applied.
#pragma once

#include <opencv2/core.hpp>
#include <random>
#include <vector>

namespace reader_bench {

// A shadow with one straight edge, which runs through the point `edge`. The shadow covers everything on that side of
// the edge to which `side` points, and removes the share `depth` of the light there. Across the edge, the light changes
// over `penumbra` pixels.
struct Shadow {
    cv::Point2d edge;
    cv::Point2d side;  // a unit vector
    double depth = 0;
    double penumbra = 1;
};

// A reflection that adds light around a point.
struct Glare {
    cv::Point2d centre;
    double radius = 1;  // standard deviation of a Gaussian
    double strength = 0;
};

// An object in front of all targets, such as fingers, a hand or a cable.
struct Obstacle {
    std::vector<cv::Point2d> outline;
    double level = 120;
};

struct Exposure {
    float paperLevel = 220;
    float inkLevel = 30;
    cv::Point2d lightSlope;  // relative change of the light over the picture's width, and over its height
    double vignette = 0;     // relative loss of light in the corners
    std::vector<Shadow> shadows;
    std::vector<Glare> glares;
    std::vector<Obstacle> obstacles;

    double blurSigma = 0.6;  // standard deviation of a Gaussian blur, in addition to the averaging over a pixel's area
    // If the picture is out of focus, the point at p becomes a disc with the radius |defocusRadius + defocusSlope ·
    // (p - middle of the picture)|.
    double defocusRadius = 0;
    cv::Point2d defocusSlope;
    cv::Point2d motion;  // how far the picture moves along x and y while the shutter is open

    double noiseSigma = 2;    // grey levels
    double shotNoise = 0;     // variance that is added per grey level of light
    bool bayer = false;       // one colour per pixel, interpolated afterwards
    cv::Vec3d cast{1, 1, 1};  // factors of the light for blue, green and red pixels
    double balanceError = 0;  // relative error of the white balance
    double toneGain = 1;      // factor of the levels, before they are clipped at 255
    double toneGamma = 1;     // 2.2 is a camera's usual curve
    double sharpening = 0;    // unsharp masking adds this multiple of (picture - smoothed picture)
    double sharpeningSigma = 1;
    int jpegQuality = 0;  // 0 if the picture is not compressed
};

// The light at a place of the picture: its share of the full light, and the grey levels that reflections add.
struct Light {
    double share = 1;
    double reflected = 0;
};
Light lightAt(const Exposure &exposure, const cv::Size &picture, const cv::Point2d &at);

// Makes the picture of a scene. `irradiance` is the scene under even light: grey levels in 32-bit float, one channel.
// The picture has 8 bits. It has three channels if `exposure.bayer` is true, otherwise one.
cv::Mat expose(const cv::Mat &irradiance, const Exposure &exposure, std::mt19937 &random);

}  // namespace reader_bench
