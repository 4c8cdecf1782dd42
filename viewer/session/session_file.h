// Session files: the photographs' paths and the settings as JSON, and the copy that survives a crash.
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

struct SessionDocument {
    QVector<SessionEntry> photographs;
    SessionSettings settings;
};

// Writes the file whole or not at all. Photographs below the file's folder are stored with relative paths, so that the
// folder can be moved. Returns an empty text, or why the file was not written.
QString saveSession(const QString &file, const SessionDocument &document);

// Nothing if the file cannot be read or is no session; `problem` then says why.
std::optional<SessionDocument> openSession(const QString &file, QString &problem);

// A copy of the running session in a folder of its own, one per process. Copies whose process has ended without
// removing them are left from a crash.
class RecoveryCopy {
public:
    explicit RecoveryCopy(const QString &folder);
    ~RecoveryCopy();  // removes the copy
    RecoveryCopy(const RecoveryCopy &) = delete;
    RecoveryCopy &operator=(const RecoveryCopy &) = delete;

    // Returns an empty text, or why there is no new copy; the one before stays.
    QString keep(const SessionDocument &document);

    // The newest session that a crashed process left, if there is one. It becomes this object's copy.
    std::optional<SessionDocument> takeLeftOver();

private:
    void create();

    QString folder;
    QString file;
    std::unique_ptr<QLockFile> lock;
};
