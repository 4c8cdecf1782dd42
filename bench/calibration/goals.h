// The parts of the calibration benchmark. Each function prints a table and returns true if all goals in the table are
// met. The last two functions exist only if the reader is built, too.
#pragma once

namespace calibration_bench {

// Compares the errors of simulated calibrations with the standard deviations that the calibrations state.
bool measureTrueSigmas(int runs);
// Measures how long a calibration from given corners takes, how this time grows with the number of photographs, and how
// long a map of the lens's uncertainty takes.
bool measureTime();
// Compares calibrations from all visible corners with calibrations from completely visible targets only.
bool measurePartialViews();
// Checks what calibrate() does if the input does not determine a calibration, or if some photographs contradict the
// others.
bool measureBadInput();
// Renders pictures, reads the patterns in them, calibrates, and compares the result with the truth.
bool measureSyntheticTruth();
// Calibrates from the stereo photographs of OpenCV's documentation, which are in `folder`, and compares the residuals
// with those of OpenCV's own calibration from the same corners.
bool measurePublicPhotographs(const char *folder);

}  // namespace calibration_bench
