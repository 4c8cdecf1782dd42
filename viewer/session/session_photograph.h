// A photograph of the session: its file, the patterns read in it, and whether it takes part in the calibration. Only a
// thumbnail of its picture is kept.
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
    int id = 0;  // unique within a session; not reused after the photograph is removed
    QString path;
    bool isIncluded = true;  // false if the user took it out

    PhotographState state = PhotographState::Waiting;
    QString problem;  // why no pattern was read, as a sentence; empty while waiting or if patterns were read
    // True if the file is cut off before the end of its picture. The patterns found are then shown but not used.
    bool isTruncated = false;
    int width = 0;  // pixels of the stored picture, whatever its orientation tag says
    int height = 0;
    std::shared_ptr<const PatternReadings> readings;  // null if the photograph is waiting or unreadable
    std::string exifCamera;                           // maker, model and serial number, as far as the file has them
    QImage thumbnail;                                 // at most thumbnailSize
};

constexpr QSize thumbnailSize(160, 120);

// Reads the file and sets the members that follow `isIncluded`. If `isCancelled` returns true, this function may return
// early; the members then mean nothing. Never throws. May be called from several threads at the same time.
void readFromFile(SessionPhotograph &photograph, const SessionSettings &settings,
                  const std::function<bool()> &isCancelled);

// Returns the picture of a file in grey, for display; a null image if the file cannot be read.
QImage loadPicture(const QString &path);

// Returns absolute paths: the given files, and the pictures in the given folders and in all folders below them. The
// pictures of each given folder are sorted by path so that photo2 comes before photo10.
QStringList photographFilesIn(const QStringList &filesAndFolders);

// True if the file's name has the ending of a picture format.
bool isPictureName(const QString &path);
