#include <QCoreApplication>
#include <QMessageBox>
#include <QProcess>

#include "ui/viewer_start.h"

void startViewer(const QString &program) {
    if (!QProcess::startDetached(program, {QStringLiteral("--caltab-calibration")})) {
        QMessageBox::warning(nullptr, QCoreApplication::translate("MainWindow", "Error"),
                             QCoreApplication::translate("MainWindow", "%1 could not be started").arg(program),
                             QMessageBox::Ok);
    }
}
