// Writes the files that a user keeps from a calibration. Both functions return an empty text, or the reason why nothing
// was written. The result must have a calibration. Both may be called on a background thread.
#pragma once

#include <QString>
#include <QVector>

#include "viewer/session/session_photograph.h"
#include "viewer/session/session_result.h"

// Writes all files of calibration::resultFiles() to a folder.
QString writeResults(const SessionResult &result, const SessionSettings &settings, const QString &folder);

// Writes the report with thumbnails of the photographs: a PDF if the file's name ends with .pdf, otherwise a web page.
QString writeReport(const SessionResult &result, const QVector<SessionPhotograph> &photographs, const QString &file);
