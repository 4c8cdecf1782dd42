// The window of LmView: photographs and settings on the left, the chosen photograph in the middle, the results on the
// right. It holds no data; everything is in the session. The actions of its menus are in viewer_actions.cpp.
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

    // Adds photographs and folders to the session, adds pattern files to its settings, and starts to read a video. If
    // `files` contains a session file, that session replaces the present one, and the other files are ignored.
    void open(const QStringList &files);
    void setArrangement(Arrangement arrangement);
    // Writes the result's files. Returns an empty text, or the reason why they were not written. There must be a result
    // with a calibration.
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

    // Adds photographs and folders. A session that is being opened will replace the list, so they are added after it.
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
    // Writes something in the background. `write` returns an empty text, or the reason why it was not written.
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
    // The work of `keeping` shares this object. So the object removes the copy only when the window and all of this
    // work have released the object.
    std::shared_ptr<RecoveryCopy> recovery;
    std::optional<SessionDocument> kept;  // what the copy has; empty if that is not known
    std::optional<SessionDocument> leftOver;
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
