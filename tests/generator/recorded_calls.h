// Reads the calls that the scripted library recorded, and lists the calls that a test expects from
// MainWindow::update().
#pragma once

#include <QRegularExpression>
#include <QStringList>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace recorded_calls {

inline QStringList all() {
    QStringList lines;
    for (const auto &line : scripted_lmlib64::callLines()) {
        lines << QString::fromStdString(line);
    }
    return lines;
}

inline int count(const QString &beginning) {
    return all().filter(QRegularExpression("^" + QRegularExpression::escape(beginning))).size();
}

// Returns the lines, with "$" replaced by the path of the slot and "@" by the path of the first element of the slot's
// "Patterns".
inline QStringList inSlot(int slot, const QStringList &lines) {
    QStringList filled;
    for (QString line : lines) {
        line.replace(QLatin1Char('@'), QStringLiteral("$/Parameters/Patterns/\\0"));
        filled << line.replace(QLatin1Char('$'), QStringLiteral("/Execute/%1").arg(slot));
    }
    return filled;
}

// Returns the calls that start a command in the slot "$", wait until the command has ended, and check that it
// succeeded.
inline QStringList runCalls(const QString &command) {
    return {"lmLibSetString $/Command " + command, "lmLibGetType $/Command", "lmLibWaitForType $/Command 1 true",
            "lmLibGetType $/Result/ErrorSymbol"};
}

// Returns all calls that one MainWindow::update() makes. `patternWrites` are those of them that write the pattern. The
// update is expected to read the picture of the default script, which has 4 x 4 pixels.
inline QStringList updateCalls(int slot, const QStringList &patternWrites) {
    return inSlot(slot,
                  QStringList{"lmLibMakeUniqueItem /Execute", "lmLibSetBool $/Parameters/Encoding true",
                              "lmLibSetInt $/Parameters/ImageSize 2000"} +
                      patternWrites + runCalls("GenerateCalibrationPattern") +
                      QStringList{"lmLibGetBinaryInfo $/Result/Patterns/\\0", "lmLibGetCount $/Result/Patterns/\\0",
                                  "lmLibGetBinary $/Result/Patterns/\\0 16", "lmLibErase $"});
}

}  // namespace recorded_calls
