// From the readings of photographs to the observations that calibrate() takes: cameras, moments, prints and corners.
// Everything that could not be used is named with its reason. Every function may be called from any thread.
#pragma once

#include <string>
#include <vector>

#include "calibration/input/photograph_reading.h"
#include "calibration/input/print_catalogue.h"
#include "calibration/observations.h"
#include "calibration/unused_photograph.h"

namespace calibration {

struct CollectedObservations {
    // Photographs without a usable corner and cameras without such a photograph are not in it. Photographs are named as
    // their files. Disturbed corners are in it, but not used.
    Observations observations;
    std::vector<UnusedPhotograph> unused;  // in the order of the photographs
    std::vector<std::string> notices;      // whole sentences: what else the user should know
};

// isRig: cameras are fixed to each other, and photographs with the same file name, number or position were taken at the
// same moment; see camera_groups.h, also for the exception if that is not clear. Otherwise every photograph has a
// moment of its own.
CollectedObservations collectObservations(const std::vector<ReadPhotograph> &photographs, const PrintedTarget &target,
                                          bool isRig);

// Numbers cameras, prints and moments anew, without those that no sighting needs; prints keep their order.
void dropUnseen(Observations &observations);

}  // namespace calibration
