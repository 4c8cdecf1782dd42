// Converts the readings of photographs to observations (cameras, moments, prints and corners), which calibrate() needs
// as its input. A photograph that could not be used is named with a reason. The other photographs may also show
// patterns that could not be used. These patterns are counted by reason, with one notice for each reason. Two kinds of
// patterns are ignored without a word: those without a measured corner, and small plain boards beside a much larger
// one, which are probably texture in the background. All functions may be called from any thread.
#pragma once

#include <string>
#include <vector>

#include "calibration/input/photograph_reading.h"
#include "calibration/input/print_catalogue.h"
#include "calibration/observations.h"
#include "calibration/unused_photograph.h"

namespace calibration {

struct CollectedObservations {
    // Contains only photographs with a measured corner of a known print, and only cameras that took such a photograph.
    // The name of a photograph is the path of its file. Disturbed corners are included, but marked as not used.
    Observations observations;
    std::vector<UnusedPhotograph> unused;  // in the order of the photographs
    std::vector<std::string> notices;      // whole sentences with what else the user should know
};

// If `isRig` is true, the cameras are fixed to each other. Then momentsOfRig (camera_groups.h) finds the photographs
// that were taken at the same moment, and its exception is passed on. Otherwise, every photograph has a moment of its
// own.
CollectedObservations collectObservations(const std::vector<ReadPhotograph> &photographs, const PrintedTarget &target,
                                          bool isRig);

// Removes the cameras and moments without a photograph and the prints without a sighting, and renumbers the others.
// Cameras and prints keep their order.
void dropUnseen(Observations &observations);

}  // namespace calibration
