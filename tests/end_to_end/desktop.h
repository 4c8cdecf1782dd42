// A desktop for one test, with an X server that draws into memory, a window manager, and simulated keys and mouse.
//
// Needs Xvfb, openbox, xdotool and xprop in the path. If one of them cannot be started or does not answer in time, the
// test run ends with a message.
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

class Desktop {
public:
    // Starts the server on a free display, and the window manager. The destructor ends both.
    Desktop();
    ~Desktop();
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;

    // The display's name, such as ":5".
    QString display() const { return displayName; }

    // Runs xdotool and returns what it prints.
    QString xdotool(const QStringList &arguments) const;

    // Waits until a window with this title is shown, makes it the active one and returns its number.
    QString waitForWindow(const QString &title) const;
    void type(const QString &text) const;
    // Presses keys by name, such as "Return" or "ctrl+a", one after the other.
    void press(const QStringList &keys) const;

private:
    QProcess server;
    QProcess windowManager;
    QString displayName;
};
