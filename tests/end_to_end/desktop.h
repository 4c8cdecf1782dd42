// A desktop of the test's own: an X server without a screen and a window manager, and a user's hands on it.
//
// Needs Xvfb, openbox, xdotool and xprop in the path. Whatever cannot be started, or does not answer in time, ends
// the test run with a message.
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

class Desktop {
public:
    // Starts both on a free display; ends them with the object.
    Desktop();
    ~Desktop();
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;

    // The display's name, such as ":5".
    QString display() const { return displayName; }

    // Runs xdotool and returns what it prints.
    QString xdotool(const QStringList &arguments) const;

    // Waits for a window of this title to be shown and makes it the active one; its number.
    QString waitForWindow(const QString &title) const;
    void type(const QString &text) const;
    // Presses keys by name, such as "Return" or "ctrl+a", one after the other.
    void press(const QStringList &keys) const;

private:
    QProcess server;
    QProcess windowManager;
    QString displayName;
};
