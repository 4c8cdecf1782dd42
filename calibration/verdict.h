// Writes the texts that say how good a calibration is and how to improve it.
#pragma once

#include "calibration/calibrate.h"

namespace calibration {

// Fills Calibration::verdict and adds to Calibration::notices. All other members must be complete, except for `next`.
// `isLensGiven` tells whether the user gave the lens model; if so, the advice can be to let the program choose the
// model.
void giveVerdict(Calibration &calibration, bool isLensGiven);

}  // namespace calibration
