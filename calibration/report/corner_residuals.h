// Where corners were seen and how far from there the calibration puts them.
#pragma once

#include <vector>

#include "calibration/calibrate.h"

namespace calibration {

struct CornerResidual {
    Eigen::Vector2d image;  // where it was seen, pixels
    Eigen::Vector2d error;  // pixels: from there to where the calibration puts it
};

// Of the used corners of one sighting; empty if the sighting does not count.
std::vector<CornerResidual> cornerResiduals(const Calibration &calibration, const Sighting &sighting);

// What the table of photographs says about each one, in their order.
struct PhotographSummary {
    int seen = 0;  // corners, used or not
    int used = 0;
    double sumOfSquares = 0;           // of the used corners' distances, pixels squared
    std::vector<int> prints;           // that it shows
    std::vector<std::string> reasons;  // why something of it is left out

    double rms() const;  // pixels per point; 0 without used corners
};
std::vector<PhotographSummary> summariseEach(const Calibration &calibration);

}  // namespace calibration
