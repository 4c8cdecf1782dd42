// Computes the residuals of corners in pixels, and a summary of each photograph: its corners, its residuals, its
// prints, and why some of these prints are left out.
#pragma once

#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

struct CornerResidual {
    Eigen::Vector2d image;  // the observed corner, pixels
    Eigen::Vector2d error;  // the corner as the calibration projects it, minus `image`; pixels
};

// Returns the residuals of the used corners of one sighting. Empty if the sighting does not take part, or if one of
// these corners cannot be projected.
std::vector<CornerResidual> cornerResiduals(const Calibration &calibration, const Sighting &sighting);

// A row of the table of photographs.
struct PhotographSummary {
    int seen = 0;  // corners, used or not
    int used = 0;
    double sumOfSquares = 0;           // of the used corners' residuals, pixels squared
    std::vector<int> prints;           // the prints that the photograph shows
    std::vector<std::string> reasons;  // why some of these prints are left out

    double rms() const;  // pixels; 0 if there are no used corners
};
// Returns a summary of each photograph, in the order of the observations.
std::vector<PhotographSummary> summariseEach(const Calibration &calibration);

}  // namespace calibration
