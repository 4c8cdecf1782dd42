// A program that stands in for another one and keeps what it was called with.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

class RecordingProgram {
public:
    // Makes the program's file and the folders on the way; what it keeps lies beside it.
    explicit RecordingProgram(const QString &fileName);

    const QString &fileName() const { return file; }

    // The arguments of every run since the start or forget().
    QVector<QStringList> runs() const;
    void forget() const;

private:
    QString file;
    QString record;
};
