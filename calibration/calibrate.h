// Computes a whole calibration from observed corners: lenses, rig, poses and the shape of every print, how certain
// these are, and which sightings did not fit and why. It reads no photographs and writes no files.
//
// Axes and units as in observations.h. Photographs do not determine the absolute scale. If no print of a group was
// measured, the group's first print is taken as exact: the geometric mean of its x and y scale is 1.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "calibration/covariance.h"
#include "calibration/outliers.h"
#include "calibration/projection_uncertainty.h"

namespace calibration {

struct CalibrateOptions {
    // The model of every camera. If absent, a model is chosen for each camera by how well it predicts held-out
    // photographs.
    std::optional<LensModel> lens;
    // Lets prints bend if that predicts held-out photographs better.
    bool mayBend = true;
};

struct LeftOut {
    int sighting = 0;
    Misfit misfit = Misfit::Unclear;
};

struct Calibration {
    Observations observations;  // with isUsed as decided, and each camera's lens as chosen
    Estimate estimate;
    Freedom freedom;
    Covariance covariance;
    std::vector<LeftOut> leftOut;
    // Prints whose scale or ratio the photographs do not determine, so that little more than the prior is known of it.
    std::vector<int> undeterminedPrints;
    // For each camera, the difference in pixels between a calibration from one half of the moments and one from the
    // other half.
    std::vector<std::optional<PictureMap>> halves;

    double rms() const;  // of the distances, in pixels, of all used corners from where the estimate puts them
};

// The reason why no calibration can be made, as a sentence for the user.
class CalibrationImpossible : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Throws CalibrationImpossible if the observations do not determine a calibration.
Calibration calibrate(Observations observations, const CalibrateOptions &options = {});

}  // namespace calibration
