// Reads and writes session files. They contain the photographs' paths and the settings as JSON. Also keeps a copy of
// the running session, so that the session survives a crash.
#pragma once

#include <QLockFile>
#include <QString>
#include <QVector>
#include <memory>
#include <optional>

#include "viewer/session/session_settings.h"

struct SessionEntry {
    QString path;  // absolute
    bool isIncluded = true;
};
inline bool operator==(const SessionEntry &a, const SessionEntry &b) {
    return a.path == b.path && a.isIncluded == b.isIncluded;
}

struct SessionDocument {
    QVector<SessionEntry> photographs;
    SessionSettings settings;
};
inline bool operator==(const SessionDocument &a, const SessionDocument &b) {
    return a.photographs == b.photographs && a.settings == b.settings;
}

// Writes the file completely or not at all. Photographs below the file's folder are stored with relative paths, so that
// the folder can be moved. Returns an empty text, or the reason why the file was not written.
QString saveSession(const QString &file, const SessionDocument &document);

// Returns the session in the file. Empty if the file cannot be read or is not a session; `problem` then says why.
std::optional<SessionDocument> openSession(const QString &file, QString &problem);

// Keeps a copy of the running session in a folder that all processes share. Each process has one copy. It removes the
// copy when it ends normally, so a copy whose process no longer runs was left by a crash. Writing waits for the disk,
// so use this on a background thread, one call after the other.
class RecoveryCopy {
public:
    explicit RecoveryCopy(const QString &folder);
    ~RecoveryCopy();  // removes the copy
    RecoveryCopy(const RecoveryCopy &) = delete;
    RecoveryCopy &operator=(const RecoveryCopy &) = delete;

    // Replaces the copy. Returns an empty text, or the reason why the copy was not written; the old one then stays.
    QString keep(const SessionDocument &document);

    // Goes through the copies that crashed processes left, from the newest to the oldest. Returns the first session
    // that has photographs; empty if there is none. Copies without photographs and unreadable copies are removed on the
    // way. The returned session becomes this object's copy, so that another crash does not lose it. If this object's
    // copy cannot be written, the crashed process's copy is not removed.
    std::optional<SessionDocument> takeLeftOver();

private:
    void create();

    QString folder;
    QString file;
    std::unique_ptr<QLockFile> lock;
};
