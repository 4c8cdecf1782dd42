#include "tests/end_to_end/desktop.h"

#include <QProcess>

QString Desktop::xdotool(const QStringList &arguments) const {
    QProcess process;
    process.start("xdotool", arguments);
    if (!process.waitForFinished()) {
        qFatal("xdotool %s does not end", qPrintable(arguments.join(' ')));
    }
    return QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed();
}

QString Desktop::waitForWindow(const QString &title) const {
    QString window =
        xdotool({"search", "--sync", "--onlyvisible", "--limit", "1", "--name", '^' + title + '$'}).section('\n', 0, 0);
    xdotool({"windowactivate", "--sync", window});
    return window;
}

void Desktop::type(const QString &text) const {
    xdotool({"type", "--delay", "10", text});
}

void Desktop::press(const QStringList &keys) const {
    xdotool(QStringList{"key", "--delay", "10"} + keys);
}
