#include "tests/end_to_end/desktop.h"

#include <QElapsedTimer>
#include <QThread>

namespace {

constexpr int patienceMs = 30000;

void start(QProcess &process, const QString &program, const QStringList &arguments, const QString &display) {
    if (!display.isEmpty()) {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", display);
        process.setProcessEnvironment(environment);
    }
    process.start(program, arguments);
    if (!process.waitForStarted()) {
        qFatal("%s cannot be started", qPrintable(program));
    }
}

// What a program prints until it ends.
QString outputOf(const QString &program, const QStringList &arguments, const QString &display) {
    QProcess process;
    start(process, program, arguments, display);
    if (!process.waitForFinished(patienceMs)) {
        process.kill();
        process.waitForFinished();
        qFatal("%s %s does not end", qPrintable(program), qPrintable(arguments.join(' ')));
    }
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

void end(QProcess &process) {
    process.terminate();
    if (!process.waitForFinished(patienceMs)) {
        process.kill();
        process.waitForFinished();
    }
}

}  // namespace

Desktop::Desktop() {
    // The server chooses a free display and writes its number as soon as it answers. -noreset, because it would
    // otherwise reset when its last client leaves, while the next one may be connecting.
    start(server, "Xvfb", {"-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"}, {});
    while (!server.canReadLine()) {
        if (!server.waitForReadyRead(patienceMs)) {
            qFatal("Xvfb does not answer: %s", server.readAllStandardError().constData());
        }
    }
    displayName = ':' + QString::fromLatin1(server.readLine()).trimmed();

    windowManager.setStandardErrorFile(QProcess::nullDevice());
    start(windowManager, "openbox", {"--sm-disable"}, displayName);
    QElapsedTimer timer;
    timer.start();
    while (!outputOf("xprop", {"-root", "_NET_SUPPORTING_WM_CHECK"}, displayName).contains("window id")) {
        if (timer.hasExpired(patienceMs)) {
            qFatal("openbox does not answer");
        }
        QThread::msleep(20);
    }
}

Desktop::~Desktop() {
    end(windowManager);
    end(server);
}

QString Desktop::xdotool(const QStringList &arguments) const {
    return outputOf("xdotool", arguments, displayName).trimmed();
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
