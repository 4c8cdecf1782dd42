// From photographs that have been read to a result: the place where a session meets the calibration.
#pragma once

#include <QVector>

#include "viewer/session/session_photograph.h"
#include "viewer/session/session_result.h"

// Calibrates with the photographs that take part. A reason why that is impossible is in the result. Throws
// calibration::Cancelled. Takes long; for a background thread.
SessionResult calibratePhotographs(const QVector<SessionPhotograph> &photographs, const SessionSettings &settings,
                                   const calibration::CalibrateOptions &options);
