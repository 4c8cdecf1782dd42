// Starts the viewer, which calibrates a printed assembly.
#include <QFileInfo>
#include <QMessageBox>

#include "generator/main_window.h"
#include "lmlib/tree_item.h"
#include "ui/viewer_start.h"

void MainWindow::openCalTabCalibration() {
    // This read is intentionally unchecked. If the library's tree does not contain the viewer, the path is empty, and
    // the message below reports that the program does not exist.
    const std::string path = TreeItem()["Path"]["Application"]["LmView"].asStringUnchecked();
    const QString program = QString::fromLocal8Bit(path.c_str());
    if (!QFileInfo::exists(program)) {
        QMessageBox::warning(nullptr, tr("Error"), tr("%1 does not exist").arg(program), QMessageBox::Ok);
    } else if (!QFileInfo(program).isExecutable()) {
        QMessageBox::warning(nullptr, tr("Error"), tr("%1 is not executable").arg(program), QMessageBox::Ok);
    } else {
        startViewer(program);
    }
}
