// The real program on a desktop, with the mouse on its widgets: where they are, where its windows are and how they
// look.
//
// Positions are pixels of the screen. Everything waits a bounded time; what fails gives a false or empty result.
#pragma once

#include <QImage>
#include <QMap>
#include <QPoint>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QVector>

class Desktop;

// Makes this process, its application still to be made, and the programs it starts use the desktop, and nothing of
// the session or the settings of whoever runs it.
void useDesktop(const Desktop &desktop);

class DrivenProgram {
public:
    // By the index of the tabs.
    enum Page { Official, Custom, Flexible, Assembly, Halcon };

    explicit DrivenProgram(const Desktop &userDesktop);
    ~DrivenProgram();
    DrivenProgram(const DrivenProgram &) = delete;
    DrivenProgram &operator=(const DrivenProgram &) = delete;

    // Starts the program and waits for its window; the environment is this process's, changed by the entries, of
    // which a null text takes one out.
    bool start(const QString &program, const QMap<QString, QString> &environment, const QStringList &arguments = {});
    void stop();
    // Whether the program ends without being told to by a signal, and as one that nothing has failed in.
    bool endsWell(int milliseconds);
    bool isRunning() const { return process.state() == QProcess::Running; }
    // Once it has ended; -1 for a crash.
    int exitCode() const { return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1; }
    qint64 processId() const { return process.processId(); }
    QString window() const { return mainWindow; }

    // Moves the window so that the top-left corner of its contents is as near to the position as the window
    // manager lets it.
    bool moveWindow(QPoint position);
    bool showPage(Page page);

    // The rectangle of a widget by its object name, of a page's tab, and of the text in a spin box.
    QRect placeOf(const QString &objectName) const;
    QRect placeOfTab(Page page) const;
    QRect placeOfText(const QString &spinBoxName) const;

    // The mouse arrives by several moves, as a hand's does.
    void moveMouse(QPoint position) const;
    void click() const;
    // Left of the middle, where a button has its mark or text and a spin box its number.
    void clickOn(const QRect &place) const;

    // The program's visible windows but the main one.
    QVector<QString> otherWindows() const;
    // Waits until there is one, or none; gives the window, or an empty text when the time is over.
    QString waitForOtherWindow(int milliseconds = 5000) const;
    bool waitForNoOtherWindow(int milliseconds) const;

    static QRect geometryOf(const QString &window);
    static QImage contentsOf(const QString &window);

private:
    QStringList visibleWindows(const QStringList &condition) const;
    QRect placeInWindow(const QRect &place) const;

    const Desktop &desktop;
    QProcess process;
    QString mainWindow;
    // Relative to the window's contents, by object name; text and tab places by "<name>/text" and "tab/<index>".
    QMap<QString, QRect> places;
};
