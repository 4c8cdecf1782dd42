// The rows of the benchmark. Each prints its table and returns whether all its goals are met.
#pragma once

namespace calibration_bench {

// Simulated calibrations: are errors as large as the standard deviations say?
bool measureTrueSigmas(int runs);
// From corners to the result, and how the time grows with the number of photographs.
bool measureTime();
// All that is seen of a target against whole targets only.
bool measurePartialViews();
// Input that does not determine a calibration, or that contradicts itself.
bool measureBadInput();
// Rendered pictures, read and calibrated: how far from the truth the result is.
bool measureSyntheticTruth();
// The stereo photographs of OpenCV's documents in this folder: the same corners through OpenCV and through ours.
bool measurePublicPhotographs(const char *folder);

}  // namespace calibration_bench
