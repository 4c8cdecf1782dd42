// The window of LmView: photographs and settings on the left, the chosen photograph in the middle, the results on the
// right. All photographs, settings and results are in the session. The actions of the window's menus are in
// viewer_actions.cpp.
#pragma once

#include <QListView>
#include <QMainWindow>
#include <QTimer>
#include <vector>

#include "viewer/photograph_list.h"
#include "viewer/session/session.h"

class AxesPanel;
class LivePanel;
class PatternsView;
class PhotographView;
class QFrame;
class QLabel;
class QProgressBar;
class QPushButton;
class QSlider;
class QTabWidget;
class ResultView;
class SceneView;
class SettingsPanel;

class ViewerWindow : public QMainWindow {
    Q_OBJECT

public:
    // Keeps a copy of the session in `recoveryFolder`, so that the session can be restored after a crash. Keeps no copy
    // if `recoveryFolder` is empty.
    explicit ViewerWindow(const QString &recoveryFolder);
    ~ViewerWindow() override;

    // Adds photographs and folders to the session, adds pattern files to its settings, and plays a video as the live
    // source. If `files` contains a session file, that session replaces the present one, and the other files are
    // ignored.
    void open(const QStringList &files);
    void setArrangement(Arrangement arrangement);
    // Write the result's files, or its report. Return an empty text, or the reason why nothing was written. There must
    // be a result with a calibration.
    QString writeResultsTo(const QString &folder) const;
    QString writeReportTo(const QString &file) const;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    QWidget *makePhotographColumn();
    QWidget *makePictureColumn();
    QWidget *makeTabs();
    QWidget *makeResultColumn();
    QWidget *makeRecoveryBar();
    void addTab(ResultView *view, const QString &title);
    void makeMenus();
    void connectSession();

    // Adds photographs and folders. If a session file is being opened, they are added only after its photographs have
    // replaced the list.
    void add(const QStringList &pictures);
    void addPhotographs();
    void addFolder();
    void showLive();
    void paste();
    void openSessionFile();
    void saveSessionFile();
    // Reads the file and looks for its photographs in the background, because a network disk can be slow.
    void openSessionDocument(const QString &file);
    void showOpenedSession(const QString &file, const SessionDocument &document, const QStringList &gone);
    void openExample();
    void saveResults();
    void saveReport();
    // Calls `write` in the background. If `write` returns an empty text, calls `whenDone` afterwards. Otherwise the
    // text is the reason why nothing was written, and the user is told.
    void save(std::function<QString()> write, std::function<void()> whenDone);
    void showManual();
    void showAbout();
    void toggleSelected();
    void removeSelected();
    void startRecovery(const QString &folder);
    void offerRecovery();
    void keepCopy();

    void showCurrentPhotograph();
    void showPhotograph(int id);
    void showResult();
    void showProgress();
    void cornerPicked(QPointF pixel);
    void tell(const QString &problem);
    QVector<int> selectedIds() const;

    Session session;
    // Shared with the work of `keeping`. When the window has been closed and this work has ended, nobody holds the
    // object any more, and its destructor removes the copy.
    std::shared_ptr<RecoveryCopy> recovery;
    std::optional<SessionDocument> kept;      // what the copy has; empty if that is not known
    std::optional<SessionDocument> leftOver;  // what a crash left, until the user restores or discards it
    QTimer recoveryTimer;
    PhotographListModel photographs;
    QListView *list = nullptr;
    SettingsPanel *settingsPanel = nullptr;
    PhotographView *picture = nullptr;
    QSlider *factor = nullptr;
    QLabel *factorText = nullptr;
    QTabWidget *tabs = nullptr;
    std::vector<ResultView *> views;
    PatternsView *patternsView = nullptr;
    SceneView *sceneView = nullptr;
    AxesPanel *axes = nullptr;
    LivePanel *live = nullptr;
    QFrame *recoveryBar = nullptr;
    QLabel *progressText = nullptr;
    QProgressBar *progress = nullptr;
    QPushButton *cancel = nullptr;
    QAction *saveResultsAction = nullptr;
    QAction *reportAction = nullptr;
    std::vector<NamedCorner> pickedCorners;
    BackgroundWork opening{1};  // reads session files
    BackgroundWork saving{1};   // writes the files that the user asks for
    BackgroundWork keeping{1};  // writes the copy of the session
};
