// Models the lens and the sheet of paper. Computes the pixel at which a ray of light falls, and the point at which the
// ray meets the paper. The errors of all functions are far smaller than a hundredth of a pixel.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

namespace reader_bench {

// In image coordinates, the centre of the top-left pixel is (0, 0), x points to the right, and y points down.
struct CameraModel {
    double focalLength = 1000;  // pixels; for a fisheye lens, pixels per radian on the axis
    cv::Point2d centre;         // principal point, pixels
    double k1 = 0;              // radial distortion of normalised coordinates: r' = r (1 + k1 r² + k2 r⁴)
    double k2 = 0;
    // If true, Kannala and Brandt's model is used instead of k1 and k2: r' = t + c0 t³ + c1 t⁵, where t is the angle
    // from the axis.
    bool fisheye = false;
    std::array<double, 2> fisheyeTerms{};
};

// The camera looks along +z. Rays may be 90° or more from the axis of a fisheye; other lenses need a positive z.
cv::Point2d pixelOf(const CameraModel &camera, const cv::Vec3d &ray);
cv::Vec3d rayOf(const CameraModel &camera, const cv::Point2d &pixel);

// A sheet of paper that is rolled, waved or creased along parallel straight lines (the bending lines) without
// stretching. Sheet coordinates are measured on the paper from its middle, in pitches (synthetic_target.h). The flat
// sheet would lie in the plane z = 0.
class PaperSheet {
public:
    struct Form {
        double direction = 0;                            // direction perpendicular to the bending lines, radians
        double curvature = 0;                            // curvature of a rolled sheet, 1 / pitch
        double waveSlope = 0;                            // greatest slope of a waved sheet, radians
        double waveLength = 1;                           // pitches
        double wavePhase = 0;                            // radians
        std::vector<std::pair<double, double>> creases;  // distance from the middle in pitches; angle in radians
    };

    // The sheet has this form up to the distance `reach` from its middle, in pitches. Beyond that it is straight.
    PaperSheet(const Form &form, double reach);

    cv::Vec3d at(const cv::Point2d &onPaper) const;
    // Returns where the ray from `origin` meets the sheet. The search starts at the distance `start` from the middle of
    // the sheet, measured perpendicular to the bending lines, in pitches. `start` is then replaced by the distance that
    // was found, which is a good start for the ray of the next pixel.
    cv::Point2d hit(const cv::Vec3d &origin, const cv::Vec3d &direction, double &start) const;

private:
    // A point of the cross section, and the direction of the cross section there.
    struct Station {
        double x, z, cosine, sine;
    };
    Station station(double s) const;

    cv::Point2d acrossAxis;
    double formReach;
    double stationStep;
    std::vector<Station> stations;
};

}  // namespace reader_bench
