#include "tests/end_to_end/recording_program.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

RecordingProgram::RecordingProgram(const QString &fileName) : file(fileName), record(fileName + ".record") {
    QDir().mkpath(QFileInfo(file).path());
    QFile script(file);
    script.open(QIODevice::WriteOnly);
    // A run is one write: its arguments, each ended by a unit separator, and a record separator.
    script.write("#!/bin/sh\n{ [ $# -eq 0 ] || printf '%s\\037' \"$@\"; printf '\\036'; } >>\"$0.record\"\n");
    script.setPermissions(script.permissions() | QFile::ExeOwner | QFile::ExeUser);
}

QVector<QStringList> RecordingProgram::runs() const {
    QFile kept(record);
    QVector<QStringList> runs;
    if (!kept.open(QIODevice::ReadOnly)) {
        return runs;
    }
    QList<QByteArray> records = kept.readAll().split('\036');
    // What follows the last separator is a run that is being written.
    records.removeLast();
    for (const QByteArray &run : records) {
        QStringList arguments = QString::fromLocal8Bit(run).split('\037');
        arguments.removeLast();
        runs << arguments;
    }
    return runs;
}

void RecordingProgram::forget() const {
    QFile::remove(record);
}
