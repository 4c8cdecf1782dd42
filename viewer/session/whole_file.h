// Writes a file completely or not at all. QSaveFile is not used, because it replaces the old file with an incomplete
// one if the disk is full.
#pragma once

#include <QByteArray>
#include <QString>

// Returns an empty text, or the reason why the file was not written. Never throws. May be called from any thread.
QString writeWholeFile(const QString &file, const QByteArray &content);
