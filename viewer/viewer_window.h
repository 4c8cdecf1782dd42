// The window of LmView: photographs and settings on the left, the chosen photograph in the middle, what follows from
// them on the right. It holds no data; everything is in the session.
//
// Its actions stand in viewer_actions.cpp.
#pragma once

#include <QListView>
#include <QMainWindow>
#include <QTimer>
#include <vector>

#include "viewer/photograph_list.h"
#include "viewer/session/session.h"

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
class SettingsPanel;

class ViewerWindow : public QMainWindow {
    Q_OBJECT

public:
    // The recovery copy is kept in this folder; none if it is empty.
    explicit ViewerWindow(const QString &recoveryFolder);
    ~ViewerWindow() override;

    // Photographs and folders are added, pattern files become settings, a session is opened.
    void open(const QStringList &files);
    void setArrangement(Arrangement arrangement);
    // Writes the result's files. Returns an empty text, or why they were not written. There must be a result.
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
    QWidget *makeRecoveryBar();
    void addTab(ResultView *view, const QString &title);
    void makeMenus();
    void connectSession();

    void addPhotographs();
    void addFolder();
    void showLive();
    void paste();
    void openSessionFile();
    void saveSessionFile();
    void openSessionDocument(const QString &file);
    void openExample();
    void saveResults();
    void saveReport();
    void showManual();
    void showAbout();
    void toggleSelected();
    void removeSelected();
    void offerRecovery();

    void showCurrentPhotograph();
    void showPhotograph(int id);
    void showResult();
    void showProgress();
    void cornerPicked(QPointF pixel);
    void tell(const QString &problem);
    QVector<int> selectedIds() const;

    Session session;
    std::unique_ptr<RecoveryCopy> recovery;
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
    LivePanel *live = nullptr;
    QFrame *recoveryBar = nullptr;
    QLabel *progressText = nullptr;
    QProgressBar *progress = nullptr;
    QPushButton *cancel = nullptr;
    QAction *saveResultsAction = nullptr;
    QAction *reportAction = nullptr;
    std::vector<NamedCorner> pickedCorners;
    BackgroundWork saving{1};
};
