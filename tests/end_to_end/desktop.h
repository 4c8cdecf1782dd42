// Simulates a user's keys and mouse on the desktop on which tests/with_desktop.sh runs the test. Needs xdotool in the
// path. If a call of xdotool takes more than 30 seconds, the test run ends with a message.
#pragma once

#include <QString>
#include <QStringList>

class Desktop {
public:
    // Runs xdotool and returns what it prints.
    QString xdotool(const QStringList &arguments) const;

    // Waits until a window with this title is shown, makes it the active one and returns its number on the X server.
    QString waitForWindow(const QString &title) const;
    void type(const QString &text) const;
    // Presses keys by name, such as "Return" or "ctrl+a", one after the other.
    void press(const QStringList &keys) const;
};
