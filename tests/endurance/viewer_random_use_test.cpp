// Opens the example in the viewer, and then uses the viewer with random keys, clicks and window sizes, and pastes and
// drops random files. The seed is fixed. Some of the files are bad. The viewer must always respond in time, write files
// only to its home folder, and end without an error.
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QMimeData>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>
#include <algorithm>
#include <random>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/file_drag.h"
#include "tests/endurance/write_record.h"

namespace {

// The first limit is for processor time, because other programs may keep the machine busy. The second is for elapsed
// time, in case the viewer waits for something.
constexpr int patienceMs = 5000;
constexpr int longPatienceMs = 60000;

void write(const QString &path, const QByteArray &content) {
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(content);
}

// Makes the files to paste and to drop: good photographs, a folder of them, and many things that are not good
// photographs.
QStringList filesToBring(const QDir &folder) {
    const QString good = QStringLiteral(VIEWER_EXAMPLE "/photograph-01.jpg");
    QFile photograph(good);
    photograph.open(QIODevice::ReadOnly);
    const QByteArray content = photograph.readAll();
    write(folder.filePath("cut.jpg"), content.left(content.size() / 2));
    QByteArray damaged = content;
    std::fill(damaged.begin() + 1000, damaged.begin() + 1400, '\xA5');
    write(folder.filePath("damaged.jpg"), damaged);
    write(folder.filePath("empty.jpg"), {});
    write(folder.filePath("words.png"), "not a picture");
    write(folder.filePath("pattern.json"), "{\"Patterns\": [{}]}");
    write(folder.filePath("pattern.pdf"), "%PDF-1.4");
    write(folder.filePath("session.lmview"), "{\"Format\": 1}");
    QImage dot(1, 1, QImage::Format_RGB32);
    dot.fill(Qt::white);
    dot.save(folder.filePath("dot.png"));
    QImage(good).mirrored(true, false).save(folder.filePath("mirrored.jpg"));
    QImage(good).scaled(700, 300).save(folder.filePath("squeezed.png"));
    folder.mkpath("nothing here");
    QStringList files{good, QStringLiteral(VIEWER_EXAMPLE), folder.filePath("gone.jpg"), "/dev/null"};
    for (const QString &name : folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
        files << folder.filePath(name);
    }
    return files;
}

}  // namespace

class ViewerRandomUseTest : public QObject {
    Q_OBJECT

public:
    explicit ViewerRandomUseTest(const Desktop &usersDesktop) : desktop(usersDesktop) {}

private slots:
    void keepsRespondingAndEndsWithoutAnError();

private:
    int below(int bound) { return int(random() % unsigned(bound)); }
    QString activeWindow() const { return desktop.xdotool({"getactivewindow"}); }
    QStringList windows(const QProcess &program) const {
        return desktop
            .xdotool({"search", "--all", "--onlyvisible", "--pid", QString::number(program.processId()), "--name", "."})
            .split('\n', Qt::SkipEmptyParts);
    }
    void act(const QProcess &program, const QString &window);
    QStringList someFiles();
    void paste();
    void drop(const QString &window);
    // Waits until the program is ready for the next input. False if that takes too long or if the program has ended.
    bool answers(const QProcess &program);

    const Desktop &desktop;
    std::mt19937 random{20261121};
    QStringList files;
    int longestBusyMs = 0;
    int dropped = 0;  // drags whose files the viewer took
};

bool ViewerRandomUseTest::answers(const QProcess &program) {
    const QString process = QString("/proc/%1/").arg(program.processId());
    const auto contentOf = [&process](const QString &name) {
        QFile file(process + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    // Returns the processor time of the main thread. The thread's file `stat` has the user time and the system time in
    // hundredths of a second, after the program's name in brackets.
    const auto processorMs = [&] {
        const QByteArray stat = contentOf("task/" + QString::number(program.processId()) + "/stat");
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        return 10 * (fields.value(11).toInt() + fields.value(12).toInt());
    };
    // True if the main thread waits for events, which it does in the system call poll or ppoll. Their numbers on x86-64
    // are 7 and 271.
    const auto waits = [&contentOf] {
        const QByteArray call = contentOf("syscall").split(' ').value(0);
        return call == "7" || call == "271";
    };
    QThread::msleep(20);
    const int begin = processorMs();
    int busyMs = 0;
    QElapsedTimer timer;
    timer.start();
    while (program.state() == QProcess::Running && !waits() && busyMs < patienceMs &&
           timer.elapsed() < longPatienceMs) {
        QThread::msleep(1);
        busyMs = processorMs() - begin;
    }
    longestBusyMs = qMax(longestBusyMs, busyMs);
    return program.state() == QProcess::Running && busyMs < patienceMs && timer.elapsed() < longPatienceMs;
}

void ViewerRandomUseTest::act(const QProcess &program, const QString &window) {
    if (windows(program).size() > 1 && activeWindow() != window) {
        desktop.press({"Escape"});  // closes the dialog; keys typed into a file dialog could lead to any folder
        return;
    }
    const QStringList keys{"Tab",   "shift+Tab", "Up",     "Down",   "Left", "Right",  "space",      "plus",
                           "minus", "ctrl+Tab",  "alt+v",  "Escape", "F5",   "ctrl+t", "ctrl+0",     "Prior",
                           "Next",  "ctrl+e",    "ctrl+v", "End",    "Home", "ctrl+a", "ctrl+Delete"};
    const int choice = below(21);
    if (choice == 20 && below(2) == 0) {
        paste();
    } else if (choice == 20) {
        drop(window);
    } else if (choice == 0) {
        desktop.xdotool({"windowsize", window, QString::number(700 + below(500)), QString::number(500 + below(500))});
    } else if (choice < 9) {
        desktop.press({keys[below(keys.size())], keys[below(keys.size())]});
    } else {
        const QString button = choice < 16 ? "1" : choice < 18 ? "4" : "5";
        desktop.xdotool({"mousemove", "--window", window, QString::number(below(1100)), QString::number(below(800)),
                         "click", "--repeat", QString::number(1 + below(2)), button});
    }
}

QStringList ViewerRandomUseTest::someFiles() {
    QStringList some;
    for (int count = 1 + below(3); count > 0; --count) {
        some << files[below(files.size())];
    }
    return some;
}

void ViewerRandomUseTest::drop(const QString &window) {
    const QString geometry = desktop.xdotool({"getwindowgeometry", "--shell", window});
    const auto value = [&geometry](const QString &name) {
        return QRegularExpression("^" + name + "=(-?\\d+)$", QRegularExpression::MultilineOption)
            .match(geometry)
            .captured(1)
            .toInt();
    };
    FileDrag drag(desktop, 60);  // gives up soon, because the viewer takes no files while a dialog or menu is open
    const QPoint middle(value("X") + value("WIDTH") / 2, value("Y") + value("HEIGHT") / 2);
    dropped += drag.drop(someFiles(), middle) ? 1 : 0;
}

void ViewerRandomUseTest::paste() {
    QList<QUrl> urls;
    for (const QString &file : someFiles()) {
        urls << QUrl::fromLocalFile(file);
    }
    auto *data = new QMimeData;
    data->setUrls(urls);
    QApplication::clipboard()->setMimeData(data);
    desktop.press({"ctrl+v"});
    QTest::qWait(100);  // the viewer asks this process for the content
}

void ViewerRandomUseTest::keepsRespondingAndEndsWithoutAnError() {
    const int seconds = qEnvironmentVariableIsSet("LMCALTAB_RANDOM_SECONDS")
                            ? qEnvironmentVariableIntValue("LMCALTAB_RANDOM_SECONDS")
                            : 8;
    const QTemporaryDir home;
    const QTemporaryDir work;
    const QTemporaryDir brought;
    files = filesToBring(brought.path());
    QDir::setCurrent(work.path());
    const WriteRecord record;
    const QStringList command = record.commandFor(LMCALTAB_VIEWER_PROGRAM);
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home.path());
    environment.insert("XDG_DATA_HOME", home.filePath("data"));
    environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
    environment.insert("XDG_CACHE_HOME", home.filePath("cache"));
    environment.insert("XDG_RUNTIME_DIR", home.path());
    environment.insert("TMPDIR", home.path());
    environment.insert("BROWSER", "true");
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(work.path());
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    program.start(command.first(), command.mid(1) + QStringList{"--caltab-calibration"});
    QVERIFY(program.waitForStarted());
    const qint64 process = program.processId();
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
    QTRY_VERIFY(record.isComplete(process));
    // Some files are created without a name. Such a file is named by a call that links its path in /proc/self/fd/ to
    // the new path. The record contains both paths, so /proc/self/fd/ is expected, too.
    const QStringList expected{home.path() + "/", "/dev/", "/proc/self/fd/"};
    for (const QString &path : record.paths()) {
        const auto isWithin = [&path](const QString &folder) { return path.startsWith(folder); };
        QVERIFY2(std::any_of(expected.begin(), expected.end(), isWithin), qPrintable(path));
    }
    qInfo(
        "%d actions in the viewer in %d s, %d of them drops that the viewer accepted; busy for at most %d ms of "
        "processor time after each action; %d paths in the record of file changes",
        actions, seconds, dropped, longestBusyMs, record.paths().size());
}

int main(int argumentCount, char **arguments) {
    const Desktop desktop{};
    const QApplication application(argumentCount, arguments);
    ViewerRandomUseTest test(desktop);
    return QTest::qExec(&test, argumentCount, arguments);
}

#include "viewer_random_use_test.moc"
