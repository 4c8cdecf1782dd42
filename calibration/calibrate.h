// From observed corners to a whole calibration: lenses, rig, poses and the shape of every print, what did not fit and
// why, and how sure everything is. It reads no photographs and writes no files.
//
// Axes and units as in observations.h. Absolute scale never follows from photographs: if no print was measured, the
// first print of each group counts as exact by the geometric mean of its x and y scale.
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
    // For every camera; the model that predicts held-out photographs best if absent.
    std::optional<LensModel> lens;
    // Lets prints bend where that predicts held-out photographs better.
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
    // Prints whose scale or ratio the photographs do not tell: little more than the prior is known of them.
    std::vector<int> undeterminedPrints;
    // For each camera, the difference in pixels between calibrations from one half of the moments and from the other.
    std::vector<std::optional<PictureMap>> halves;

    double rms() const;  // of all used corners' residuals, pixels, as a distance
};

// What keeps a calibration from being made, as a sentence for the user.
class CalibrationImpossible : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Throws CalibrationImpossible if the observations do not determine a calibration.
Calibration calibrate(Observations observations, const CalibrateOptions &options = {});

}  // namespace calibration
