// Makes a result from photographs that have been read. This is where a session calls the calibration.
#pragma once

#include <QVector>

#include "viewer/session/session_photograph.h"
#include "viewer/session/session_result.h"

// Calibrates with the included photographs that are no longer waiting to be read. If there is no such photograph, the
// whole result is empty, including `problem`. If there are some, but the calibration is impossible, `problem` in the
// result says why. Throws calibration::Cancelled if options.isCancelled returns true. This takes long, so call it on a
// background thread.
SessionResult calibratePhotographs(const QVector<SessionPhotograph> &photographs, const SessionSettings &settings,
                                   const calibration::CalibrateOptions &options);

// True if the number of this print identifies it in SessionSettings::measured, that is, if no other print has the same
// number. The patterns of an assembly have numbers from 0 on. All other prints have the number -1.
bool canBeMeasured(const calibration::Observations &observations, size_t print);
