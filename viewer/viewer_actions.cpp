// The actions of the window's menus.
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFrame>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>
#include <QTabWidget>
#include <QUrl>

#include "tooltips/manual_placeholder.h"
#include "viewer/live_panel.h"
#include "viewer/result_files.h"
#include "viewer/settings_panel.h"
#include "viewer/viewer_window.h"
#include "viewer/views/photograph_view.h"

namespace {

const char *const sessionEnding = "lmview";
constexpr int recoveryDelayMs = 500;

QString exampleFolder() {
    return QDir(QCoreApplication::applicationDirPath()).filePath("../share/lmcaltab/example");
}

}  // namespace

void ViewerWindow::makeMenus() {
    const auto add = [this](QMenu *menu, const QString &text, const QKeySequence &keys, auto action) {
        QAction *made = menu->addAction(text);
        made->setShortcut(keys);
        connect(made, &QAction::triggered, this, action);
        return made;
    };
    QMenu *file = menuBar()->addMenu(tr("&File"));
    add(file, tr("&Add Photographs..."), QKeySequence("Ctrl+I"), &ViewerWindow::addPhotographs);
    add(file, tr("Add &Folder..."), QKeySequence("Ctrl+Shift+I"), &ViewerWindow::addFolder);
    add(file, tr("&Camera or Video"), QKeySequence("Ctrl+L"), &ViewerWindow::showLive);
    add(file, tr("&Paste Files"), QKeySequence::Paste, &ViewerWindow::paste);
    file->addSeparator();
    add(file, tr("Open &Example"), QKeySequence("Ctrl+E"), &ViewerWindow::openExample);
    add(file, tr("&Open Session..."), QKeySequence::Open, &ViewerWindow::openSessionFile);
    add(file, tr("&Save Session..."), QKeySequence::Save, &ViewerWindow::saveSessionFile);
    file->addSeparator();
    saveResultsAction = add(file, tr("Save &Results..."), QKeySequence("Ctrl+R"), &ViewerWindow::saveResults);
    reportAction = add(file, tr("Repor&t..."), QKeySequence("Ctrl+P"), &ViewerWindow::saveReport);
    saveResultsAction->setEnabled(false);
    reportAction->setEnabled(false);
    file->addSeparator();
    add(file, tr("&Quit"), QKeySequence("Ctrl+Q"), &QWidget::close);

    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    add(edit, tr("&Take Out or Put Back"), QKeySequence("Ctrl+T"), &ViewerWindow::toggleSelected);
    add(edit, tr("&Remove from the List"), QKeySequence("Ctrl+Del"), &ViewerWindow::removeSelected);
    add(edit, tr("&Calibrate Anew"), QKeySequence("F5"), [this] { session.calibrateAnew(); });

    QMenu *view = menuBar()->addMenu(tr("V&iew"));
    add(view, tr("Zoom &In"), QKeySequence::ZoomIn, [this] { picture->zoomIn(); });
    add(view, tr("Zoom &Out"), QKeySequence::ZoomOut, [this] { picture->zoomOut(); });
    add(view, tr("&Fit"), QKeySequence("Ctrl+0"), [this] { picture->fit(); });

    QMenu *help = menuBar()->addMenu(tr("&Help"));
    add(help, tr("&Manual"), QKeySequence::HelpContents, &ViewerWindow::showManual);
    add(help, tr("&About LmView"), {}, &ViewerWindow::showAbout);
}

void ViewerWindow::open(const QStringList &files) {
    const auto endingOf = [](const QString &file) { return QFileInfo(file).suffix().toLower(); };
    const auto sessionFile = std::find_if(files.begin(), files.end(),
                                          [&endingOf](const QString &file) { return endingOf(file) == sessionEnding; });
    if (sessionFile != files.end()) {
        openSessionDocument(*sessionFile);
        return;
    }
    QStringList pictures;
    SessionSettings settings = session.settings();
    for (const QString &file : files) {
        const QString ending = endingOf(file);
        if (ending == "json" || ending == "pdf") {
            settings.patternFiles << QFileInfo(file).absoluteFilePath();
        } else if (isVideoName(file)) {
            tabs->setCurrentWidget(live);
            live->startFile(file);
        } else {
            pictures << file;
        }
    }
    session.setSettings(settings);
    if (!pictures.isEmpty()) {
        add(pictures);
    }
}

void ViewerWindow::add(const QStringList &pictures) {
    if (opening.open() == 0) {
        session.add(pictures);
        return;
    }
    opening.add([this, pictures](const BackgroundWork::IsCancelled &) -> BackgroundWork::Delivery {
        return [this, pictures] { session.add(pictures); };
    });
}

void ViewerWindow::setArrangement(Arrangement arrangement) {
    SessionSettings settings = session.settings();
    settings.arrangement = arrangement;
    session.setSettings(settings);
}

void ViewerWindow::addPhotographs() {
    add(QFileDialog::getOpenFileNames(
        this, tr("Add Photographs"), {},
        tr("Photographs (*.jpg *.jpeg *.png *.tif *.tiff *.pgm *.ppm *.bmp *.webp);;All files (*)")));
}

void ViewerWindow::addFolder() {
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Add Folder"));
    if (!folder.isEmpty()) {
        add({folder});
    }
}

void ViewerWindow::showLive() {
    tabs->setCurrentWidget(live);
    live->setFocus();
}

void ViewerWindow::paste() {
    QStringList files;
    for (const QUrl &url : QApplication::clipboard()->mimeData()->urls()) {
        if (url.isLocalFile()) {
            files << url.toLocalFile();
        }
    }
    open(files);
}

void ViewerWindow::openSessionFile() {
    const QString file = QFileDialog::getOpenFileName(this, tr("Open Session"), {}, tr("Sessions (*.lmview)"));
    if (!file.isEmpty()) {
        openSessionDocument(file);
    }
}

void ViewerWindow::openSessionDocument(const QString &file) {
    opening.cancel();
    opening.add([this, file](const BackgroundWork::IsCancelled &isCancelled) -> BackgroundWork::Delivery {
        QString problem;
        const std::optional<SessionDocument> document = openSession(file, problem);
        if (!document) {
            return [this, problem] { tell(problem); };
        }
        QStringList gone;
        for (const SessionEntry &entry : document->photographs) {
            if (!isCancelled() && !QFileInfo::exists(entry.path)) {
                gone << entry.path;
            }
        }
        return [this, file, document = *document, gone] { showOpenedSession(file, document, gone); };
    });
}

void ViewerWindow::showOpenedSession(const QString &file, const SessionDocument &document, const QStringList &gone) {
    session.open(document);
    live->suggestFolder(QFileInfo(file).absolutePath());
    if (!gone.isEmpty()) {
        tell(tr("Photographs that cannot be found: %1 of the session's %2, such as %3. They stay in the list. Put them "
                "back where they were, and open the session again.")
                 .arg(gone.size())
                 .arg(document.photographs.size())
                 .arg(QDir::toNativeSeparators(gone.first())));
    }
}

void ViewerWindow::saveSessionFile() {
    QFileDialog dialog(this, tr("Save Session"), {}, tr("Sessions (*.lmview)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(sessionEnding);
    if (dialog.exec() == QDialog::Accepted) {
        const QString file = dialog.selectedFiles().first();
        save([file, document = session.document()] { return saveSession(file, document); }, [] {});
        live->suggestFolder(QFileInfo(file).absolutePath());
    }
}

void ViewerWindow::openExample() {
    if (!QFileInfo::exists(exampleFolder())) {
        tell(tr("The example is not installed: %1 does not exist.").arg(QDir::cleanPath(exampleFolder())));
        return;
    }
    SessionDocument document;
    document.settings.arrangement = Arrangement::Assembly;
    for (const QString &path : photographFilesIn({QDir::cleanPath(exampleFolder())})) {
        document.photographs.append({path, true});
    }
    session.open(document);
}

void ViewerWindow::saveResults() {
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Save Results to a Folder"));
    if (folder.isEmpty()) {
        return;
    }
    save([folder, result = session.result(),
          settings = session.settings()] { return writeResults(*result, settings, folder); },
         [this, folder] {
             QMessageBox::information(this, tr("Save Results"),
                                      tr("The results are in %1.").arg(QDir::toNativeSeparators(folder)));
         });
}

void ViewerWindow::save(std::function<QString()> write, std::function<void()> whenDone) {
    saving.add([this, write = std::move(write),
                whenDone = std::move(whenDone)](const BackgroundWork::IsCancelled &) -> BackgroundWork::Delivery {
        return [this, whenDone, problem = write()] {
            if (problem.isEmpty()) {
                whenDone();
            } else {
                tell(problem);
            }
        };
    });
}

QString ViewerWindow::writeResultsTo(const QString &folder) const {
    return writeResults(*session.result(), session.settings(), folder);
}

QString ViewerWindow::writeReportTo(const QString &file) const {
    return writeReport(*session.result(), session.photographs(), file);
}

void ViewerWindow::saveReport() {
    QFileDialog dialog(this, tr("Save Report"), {}, tr("Web page (*.html);;PDF (*.pdf)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix("html");
    connect(&dialog, &QFileDialog::filterSelected, &dialog,
            [&dialog](const QString &filter) { dialog.setDefaultSuffix(filter.contains("*.pdf") ? "pdf" : "html"); });
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    const QString file = dialog.selectedFiles().first();
    save([file, result = session.result(),
          photographsNow = session.photographs()] { return writeReport(*result, photographsNow, file); },
         [file] { QDesktopServices::openUrl(QUrl::fromLocalFile(file)); });
}

void ViewerWindow::showManual() {
    QDesktopServices::openUrl(QUrl(replacePlaceholders("%MANUAL%/guides/calibration/calibrating.html")));
}

void ViewerWindow::showAbout() {
    QMessageBox::about(
        this, tr("About LmView"),
        tr("<b>LmView %1</b><p>Calibrates cameras, rigs and assemblies from photographs of patterns that "
           "LmCalTab made.</p>")
            .arg(QCoreApplication::applicationVersion()));
}

QVector<int> ViewerWindow::selectedIds() const {
    QVector<int> ids;
    for (const QModelIndex &index : list->selectionModel()->selectedIndexes()) {
        ids << index.data(PhotographListModel::IdRole).toInt();
    }
    return ids;
}

void ViewerWindow::toggleSelected() {
    const QVector<int> ids = selectedIds();
    if (!ids.isEmpty()) {
        session.setIncluded(ids, !session.photograph(ids.first())->isIncluded);
    }
}

void ViewerWindow::removeSelected() {
    session.remove(selectedIds());
}

void ViewerWindow::startRecovery(const QString &folder) {
    recovery = std::make_shared<RecoveryCopy>(folder);
    recoveryTimer.setSingleShot(true);
    recoveryTimer.setInterval(recoveryDelayMs);
    connect(&recoveryTimer, &QTimer::timeout, this, &ViewerWindow::keepCopy);
    offerRecovery();
}

void ViewerWindow::offerRecovery() {
    keeping.add([this, copy = recovery](const BackgroundWork::IsCancelled &) -> BackgroundWork::Delivery {
        return [this, found = copy->takeLeftOver()] {
            leftOver = found;
            recoveryBar->setVisible(leftOver.has_value());
        };
    });
}

void ViewerWindow::keepCopy() {
    const SessionDocument document = session.document();
    // If `isUndecided` is true, the user may still restore the session that a crash left. The copy holds that session,
    // so a session without photographs must not replace it.
    const bool isUndecided = leftOver && document.photographs.isEmpty();
    // If kept == document, the copy has the whole document already. This is so after a photograph was read, for
    // example, because reading does not change the document.
    if (isUndecided || kept == document) {
        return;
    }
    kept = document;
    keeping.add([this, copy = recovery, document](const BackgroundWork::IsCancelled &) -> BackgroundWork::Delivery {
        return [this, problem = copy->keep(document)] {
            if (!problem.isEmpty()) {
                kept.reset();
                statusBar()->showMessage(tr("A crash would lose this session. %1").arg(problem));
            } else if (findChild<QStatusBar *>() != nullptr) {
                statusBar()->clearMessage();
            }
        };
    });
}

void ViewerWindow::tell(const QString &problem) {
    if (!problem.isEmpty()) {
        QMessageBox::warning(this, tr("LmView"), problem);
    }
}
