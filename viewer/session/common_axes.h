// Finds the coordinate system that the user has chosen for the results. A reference pattern or three corners define it.
#pragma once

#include <QString>
#include <optional>

#include "calibration/output/assembly.h"
#include "viewer/session/session_settings.h"

// Returns three corners that define the chosen coordinate system. Empty if the user has not chosen a coordinate system,
// or has chosen the axes of a print that has no lattice or is not in the calibration; the results then have the axes of
// the first print that has a pose. Does not check whether the three corners can be used.
std::optional<calibration::AssemblyAxes> chosenAxes(const calibration::Calibration &calibration,
                                                    const SessionSettings &settings);

struct CommonAxes {
    // Converts places from the world of the calibration's firstGroup() to the chosen coordinate system.
    calibration::RigidMotion fromWorld;
    // Why the chosen coordinate system cannot be made; empty if it can. If it cannot, `fromWorld` is the identity.
    QString problem;
};

CommonAxes commonAxes(const calibration::Calibration &calibration, const SessionSettings &settings);
