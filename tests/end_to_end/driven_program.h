// Runs the real program on a desktop, moves the mouse over its widgets and clicks them, and tells where its windows are
// and what they show.
//
// Positions are pixels of the screen. Every wait has a time limit. An operation that fails returns false or an empty
// result.
#pragma once

#include <QImage>
#include <QMap>
#include <QPoint>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QStringList>

class Desktop;

class DrivenProgram {
public:
    // The values are the indices of the tabs.
    enum Page { Official, Custom, Flexible, Assembly, Halcon };

    explicit DrivenProgram(const Desktop &userDesktop);
    ~DrivenProgram();
    DrivenProgram(const DrivenProgram &) = delete;
    DrivenProgram &operator=(const DrivenProgram &) = delete;

    // Starts the program and waits for its window. The program gets the environment of this process. The entries of
    // `environment` are added to it and override entries of the same name.
    bool start(const QString &program, const QMap<QString, QString> &environment, const QStringList &arguments = {});
    void stop();
    // Waits for the program to end. True if it ends in time, without a crash and with the exit code 0.
    bool endsWell(int milliseconds);
    bool isRunning() const { return process.state() == QProcess::Running; }
    qint64 processId() const { return process.processId(); }
    QString window() const { return mainWindow; }

    bool showPage(Page page);

    // placeOf returns the rectangle of the widget with this object name, on the screen. placeOfText returns that of the
    // text in a spin box.
    QRect placeOf(const QString &objectName) const;
    QRect placeOfText(const QString &spinBoxName) const;

    // Moves the mouse in several small steps, as a hand does.
    void moveMouse(QPoint position) const;
    void click() const;

    // The ids of the program's visible windows except the main window.
    QStringList otherWindows() const;
    // waitForOtherWindow waits until a window other than the main window is visible. It returns the id of that window,
    // or an empty text if none appears in time. waitForNoOtherWindow waits until no other window is visible. It returns
    // false if one is still visible at the end.
    QString waitForOtherWindow(int milliseconds = 5000) const;
    bool waitForNoOtherWindow(int milliseconds) const;

    static QRect geometryOf(const QString &window);
    static QImage contentsOf(const QString &window);

private:
    QStringList visibleWindows(const QStringList &condition) const;

    const Desktop &desktop;
    QProcess process;
    QString mainWindow;
    // Rectangles relative to the window's contents. The key is the object name of a widget, "<object name>/text" for
    // the text in a spin box, or "tab/<index>" for a tab.
    QMap<QString, QRect> places;
};
