// Saves the patterns: the camera library writes the file in the format that the file name's extension selects.
#include <QFileDialog>
#include <QFileInfo>

#include "generator/main_window.h"
#include "lmlib/error_report.h"
#include "lmlib/lm_lib_exception.h"
#include "lmlib/tree_command.h"
#include "lmlib/tree_item.h"

void MainWindow::savePatterns() {
    QString fileName = QFileDialog::getSaveFileName(this, tr("Save pattern..."), lastSaveDirectory,
                                                    tr("Portable Document Format(*.pdf);;JSON Format (*.json)"));
    if (fileName.isEmpty()) {
        return;
    }
    // A name without a dot gets the extension .pdf, even if the user has selected the filter for JSON files. Any other
    // name stays as it is: whatever follows a dot counts as the user's own extension.
    if (!QFileInfo(fileName).fileName().contains(QLatin1Char('.'))) {
        fileName += QStringLiteral(".pdf");
    }
    lastSaveDirectory = QFileInfo(fileName).path();
    try {
        const TreeCommand command("GenerateCalibrationPattern");
        command.parameters()["Filename"] = fileName.toLocal8Bit().toStdString();
        for (std::int32_t i = 0; i < patternCount(); ++i) {
            writePatternParameters(command.parameters()["Patterns"][i], i);
        }
        std::int32_t code = 0;
        command.execute(&code, "", true);
        command.checkResult(code);
    } catch (const LmLibException &exception) {
        showErrorReport(exception);
    }
}
