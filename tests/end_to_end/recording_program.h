// A program that takes the place of another one and records the arguments of each run.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

class RecordingProgram {
public:
    // Creates the program's file and its folders. The record is a file beside it.
    explicit RecordingProgram(const QString &fileName);

    const QString &fileName() const { return file; }

    // The arguments of every run since the start or forget().
    QVector<QStringList> runs() const;
    void forget() const;

private:
    QString file;
    QString record;
};
