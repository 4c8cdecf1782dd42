// Writes shell scripts that replace other programs, and reads the files that the scripts write.
#pragma once

#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>

// Writes an executable script; the folder must exist.
inline void installScript(const QString &fileName, const QString &commands) {
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("%s cannot be written", qPrintable(fileName));
    }
    file.write("#!/bin/sh\n" + commands.toLocal8Bit() + "\n");
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

// The complete, non-empty lines of a file; none if there is no such file.
inline QStringList linesOf(const QString &fileName) {
    QFile file(fileName);
    const QString content = file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll()) : QString();
    return content.section('\n', 0, -2).split('\n', Qt::SkipEmptyParts);
}
