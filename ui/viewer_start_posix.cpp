#include <QProcess>

#include "ui/viewer_start.h"

void startViewer(const QString &program) {
    QProcess::startDetached(program, {QStringLiteral("--caltab-calibration")});
}
