// The parts of the calibration benchmark. Each function prints a table and returns true if all of its goals are met.
#pragma once

namespace calibration_bench {

// Compares the errors of simulated calibrations with the standard deviations that the calibrations state.
bool measureTrueSigmas(int runs);
// Measures the time from corners to the result, and how it grows with the number of photographs.
bool measureTime();
// Compares calibrations from all visible corners with calibrations from completely visible targets only.
bool measurePartialViews();
// Checks how the engine treats input that does not determine a calibration or that contradicts itself.
bool measureBadInput();
// Renders pictures, reads and calibrates them, and compares the result with the truth.
bool measureSyntheticTruth();
// Calibrates from the stereo photographs of OpenCV's documentation, which are in `folder`, and compares the residuals
// with those of OpenCV's own calibration from the same corners.
bool measurePublicPhotographs(const char *folder);

}  // namespace calibration_bench
