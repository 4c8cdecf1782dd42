// A photograph of the session: where it is, what was read in it, and whether it takes part. The picture itself is not
// kept, only a small one for the list.
#pragma once

#include <QImage>
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pattern_reader/pattern_reader.h"
#include "viewer/session/session_settings.h"

using PatternReadings = std::vector<pattern_reader::PatternReading>;

enum class PhotographState { Waiting, Read, Unreadable };

struct SessionPhotograph {
    int id = 0;  // unique within a session, never used again
    QString path;
    bool isIncluded = true;  // false if the user took it out

    PhotographState state = PhotographState::Waiting;
    QString problem;  // why it cannot help, as a sentence; empty if patterns were found
    int width = 0;    // pixels, as it is stored
    int height = 0;
    std::shared_ptr<const PatternReadings> readings;  // null until it was read
    std::string exifCamera;                           // maker and model; empty if the file does not say
    QImage thumbnail;                                 // at most thumbnailSize
};

constexpr QSize thumbnailSize(160, 120);

// Sets everything below isIncluded from the file. If cancelled, it may return without a result. Never throws. May be
// called from several threads at the same time.
void readFromFile(SessionPhotograph &photograph, const SessionSettings &settings,
                  const std::function<bool()> &isCancelled);

// The grey picture of a file, for showing it; null if it cannot be read.
QImage loadPicture(const QString &path);

// The files themselves, and the pictures in folders and all folders below them, sorted by name within a folder.
QStringList photographFilesIn(const QStringList &filesAndFolders);

// True if the file's name ends like that of a picture.
bool isPictureName(const QString &path);
