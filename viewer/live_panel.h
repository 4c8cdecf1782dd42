// The tab "Live": the picture of a camera or a video, what is found in it, and what it waits for until it takes a
// picture by itself.
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

    // A folder beside a session's file for pictures that are taken from now on, unless the user has chosen one.
    void suggestFolder(const QString &path);
    // Opens a video file and starts.
    void startFile(const QString &file);

    bool isRunning() const { return capture.isRunning(); }
    // What it waits for, or why it ended.
    QString statusText() const;

public slots:
    void startOrStop();

private:
    void lay();
    void start();
    void showRunning();
    void showFrame(const LiveFrame &frame);
    void showTaken(const QString &file);
    void showEnd(const QString &reason);
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
    QString videoFile;  // the last entry of `source`; empty if none was chosen
    QString folder;
    bool hasChosenFolder = false;
    int takenCount = 0;
    QTimer takenTimer;  // runs while a picture that was just taken is announced
};
