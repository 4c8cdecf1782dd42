// Random keys, clicks and window sizes in the viewer with the example open, from a fixed seed. It must always respond
// in time, write only to its own folder, and end well.
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <random>

#include "tests/end_to_end/desktop.h"

namespace {

constexpr int patienceMs = 5000;

}  // namespace

class ViewerRandomUseTest : public QObject {
    Q_OBJECT

public:
    explicit ViewerRandomUseTest(const Desktop &usersDesktop) : desktop(usersDesktop) {}

private slots:
    void survives();

private:
    int below(int bound) { return int(random() % unsigned(bound)); }
    QString activeWindow() const { return desktop.xdotool({"getactivewindow"}); }
    QStringList windows(const QProcess &program) const {
        return desktop
            .xdotool({"search", "--all", "--onlyvisible", "--pid", QString::number(program.processId()), "--name", "."})
            .split('\n', Qt::SkipEmptyParts);
    }
    void act(const QProcess &program, const QString &window);
    // A program that is busy does not answer the window manager's ping, nor take a key; it is asked by its own clock.
    bool answers(const QProcess &program);

    const Desktop &desktop;
    std::mt19937 random{20261121};
    qint64 longestWaitMs = 0;
};

bool ViewerRandomUseTest::answers(const QProcess &program) {
    QElapsedTimer timer;
    timer.start();
    QThread::msleep(20);
    // The main thread waits for events in poll.
    const auto waits = [&program] {
        QFile file(QString("/proc/%1/syscall").arg(program.processId()));
        const QByteArray call = file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(0) : QByteArray();
        return call == "7" || call == "271";
    };
    while (!waits() && timer.elapsed() < patienceMs && program.state() == QProcess::Running) {
        QThread::msleep(1);
    }
    longestWaitMs = qMax(longestWaitMs, timer.elapsed());
    return program.state() == QProcess::Running && timer.elapsed() < patienceMs;
}

void ViewerRandomUseTest::act(const QProcess &program, const QString &window) {
    if (windows(program).size() > 1 && activeWindow() != window) {
        desktop.press({"Escape"});  // never a name in a file dialog, which could lead to any folder
        return;
    }
    const QStringList keys{"Tab",   "shift+Tab", "Up",     "Down",   "Left", "Right",  "space",      "plus",
                           "minus", "ctrl+Tab",  "alt+v",  "Escape", "F5",   "ctrl+t", "ctrl+0",     "Prior",
                           "Next",  "ctrl+e",    "ctrl+v", "End",    "Home", "ctrl+a", "ctrl+Delete"};
    const int choice = below(20);
    if (choice == 0) {
        desktop.xdotool({"windowsize", window, QString::number(700 + below(500)), QString::number(500 + below(500))});
    } else if (choice < 9) {
        desktop.press({keys[below(keys.size())], keys[below(keys.size())]});
    } else {
        const QString button = choice < 16 ? "1" : choice < 18 ? "4" : "5";
        desktop.xdotool({"mousemove", "--window", window, QString::number(below(1100)), QString::number(below(800)),
                         "click", "--repeat", QString::number(1 + below(2)), button});
    }
}

void ViewerRandomUseTest::survives() {
    const int seconds = qEnvironmentVariableIsSet("LMCALTAB_RANDOM_SECONDS")
                            ? qEnvironmentVariableIntValue("LMCALTAB_RANDOM_SECONDS")
                            : 8;
    const QTemporaryDir home;
    const QTemporaryDir work;
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home.path());
    environment.insert("XDG_DATA_HOME", home.filePath("data"));
    environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
    environment.insert("XDG_CACHE_HOME", home.filePath("cache"));
    environment.insert("BROWSER", "true");
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(work.path());
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    program.start(LMCALTAB_VIEWER_PROGRAM, {"--caltab-calibration"});
    QVERIFY(program.waitForStarted());
    const QString window = desktop.waitForWindow("LmView");
    desktop.press({"ctrl+e"});
    QElapsedTimer timer;
    timer.start();
    int actions = 0;
    for (; timer.elapsed() < 1000LL * seconds; ++actions) {
        act(program, window);
        QVERIFY2(answers(program), qPrintable(QString("after action %1").arg(actions)));
    }
    for (int attempt = 0; attempt < 30 && program.state() == QProcess::Running; ++attempt) {
        for (const QString &other : windows(program)) {
            if (other != window) {
                desktop.xdotool({"windowactivate", other, "key", "Escape"});
            }
        }
        desktop.xdotool({"windowactivate", window, "key", "Escape", "ctrl+q"});
        program.waitForFinished(1000);
    }
    QCOMPARE(program.state(), QProcess::NotRunning);
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(QDir(work.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    qInfo("%d actions in the viewer, longest wait %lld ms", actions, longestWaitMs);
}

int main(int argumentCount, char **arguments) {
    const Desktop desktop{};
    const QApplication application(argumentCount, arguments);
    ViewerRandomUseTest test(desktop);
    return QTest::qExec(&test, argumentCount, arguments);
}

#include "viewer_random_use_test.moc"
