// The parts of the calibration benchmark. Each function prints a table and returns true if all of its goals are met.
#pragma once

namespace calibration_bench {

// Compares the errors of simulated calibrations with the standard deviations that the calibrations state.
bool measureTrueSigmas(int runs);
// Measures the time from corners to the result, and how it grows with the number of photographs.
bool measureTime();
// Compares calibrations from everything that is seen of a target with calibrations from whole targets only.
bool measurePartialViews();
// Checks what happens with input that does not determine a calibration, or that contradicts itself.
bool measureBadInput();
// Renders pictures, reads and calibrates them, and compares the result with the truth.
bool measureSyntheticTruth();
// Calibrates with the stereo photographs of OpenCV's documentation in this folder. OpenCV and our calibration use the
// same corners.
bool measurePublicPhotographs(const char *folder);

}  // namespace calibration_bench
