// The tab "Camera". It shows the picture of a camera or a video, and marks the patterns found in it. It takes pictures
// automatically, unless the user has switched this off, and says what it waits for before the next one.
#pragma once

#include <QTimer>
#include <QWidget>

#include "viewer/session/live_capture.h"

class LiveView;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class Session;

class LivePanel : public QWidget {
    Q_OBJECT

public:
    // The session must outlive the panel. Pictures that are taken are added to it.
    explicit LivePanel(Session *ownSession, QWidget *parent = nullptr);

    // Makes this the folder for the pictures of every source that is started from now on. Has no effect if the user has
    // chosen a folder.
    void suggestFolder(const QString &path);
    // Starts to read a video file.
    void startFile(const QString &file);

    bool isRunning() const { return capture.isRunning(); }
    // Returns the sentence above the picture. It says, for example, what the panel waits for or why the source ended.
    QString statusText() const;

public slots:
    void startOrStop();

private:
    void lay();
    void start();
    void showRunning();
    void showFrame(const LiveFrame &frame);
    void showTaken(const QString &file);
    void showEnd(const QString &reason, bool isProblem);
    void say(const QString &text, bool isBad);
    void chooseSource();
    void chooseFolder();
    void showFolder();
    void tellWhatExists();
    void useResult();

    Session *session;
    LiveCapture capture;
    QComboBox *source;
    QComboBox *size;
    QPushButton *startButton;
    QPushButton *takeButton;
    QCheckBox *byItself;
    QPushButton *folderButton;
    QLabel *status;
    LiveView *view;
    QString videoFile;  // shown as the last entry of `source`; empty if the user has chosen no video
    QString folder;
    bool hasChosenFolder = false;
    int takenCount = 0;
    QTimer takenTimer;  // runs while a picture that was just taken is announced
};
