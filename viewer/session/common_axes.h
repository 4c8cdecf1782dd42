// Finds the coordinate system that the user has chosen for the results.
#pragma once

#include <QString>
#include <optional>

#include "calibration/output/assembly.h"
#include "viewer/session/session_settings.h"

// Returns three corners that define the chosen coordinate system. Empty if the user has chosen none, or the axes of a
// print that does not exist. The results then have the axes of the first print.
std::optional<calibration::AssemblyAxes> chosenAxes(const calibration::Calibration &calibration,
                                                    const SessionSettings &settings);

struct CommonAxes {
    // Converts places from the world of the first group of prints to the chosen coordinate system.
    calibration::RigidMotion fromWorld;
    // Why the chosen coordinate system cannot be made. `fromWorld` is then the identity.
    QString problem;
};

CommonAxes commonAxes(const calibration::Calibration &calibration, const SessionSettings &settings);
