// Uses the program on a real desktop with random clicks, keys and window sizes, from a fixed seed. The program must
// always respond in time, write files only to the expected folders, and still work at the end.
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <iterator>
#include <memory>
#include <random>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/driven_program.h"
#include "tests/endurance/write_record.h"

namespace {

constexpr int patienceMs = 2000;

QByteArray contentsOf(const QString &fileName) {
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// True if the main thread of the program waits for events: it is then in the system call poll or ppoll, which have the
// numbers 7 and 271 on x86-64. False while the thread computes or waits for a command of the library.
bool waitsForEvents(qint64 process) {
    const QByteArray call = contentsOf(QString("/proc/%1/syscall").arg(process)).split(' ').value(0);
    return call == QByteArray::number(7) || call == QByteArray::number(271);
}

}  // namespace

class RandomUseTest : public QObject {
    Q_OBJECT

public:
    explicit RandomUseTest(const Desktop &usersDesktop) : desktop(usersDesktop) {}

private slots:
    void keepsRespondingAndCanStillSave();
    void closesWhileCommandsRun();

private:
    bool answers();
    void act();
    void answerOtherWindow();
    void useKeyboard();
    void resize();
    bool closeOtherWindows();
    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }
    QString word();

    const Desktop &desktop;
    std::unique_ptr<DrivenProgram> program;
    std::mt19937 random{20260801};
    QString window;
    qint64 longestWaitMs = 0;
    int actions = 0;
};

// Waits until the program is ready for the next input. False if that takes too long or if the program has ended.
bool RandomUseTest::answers() {
    QElapsedTimer timer;
    timer.start();
    QThread::msleep(30);  // gives the input time to arrive
    while (!waitsForEvents(program->processId())) {
        if (timer.elapsed() > patienceMs) {
            return false;
        }
        QThread::msleep(1);
    }
    longestWaitMs = std::max(longestWaitMs, timer.elapsed());
    return program->isRunning();
}

QString RandomUseTest::word() {
    QString text;
    for (int length = 1 + below(8); length > 0; --length) {
        text += QChar("abcdefgh0123456789,-"[below(20)]);  // no dots, because ".." is the parent folder
    }
    return text;
}

void RandomUseTest::answerOtherWindow() {
    // Uses only the keyboard, because a click in a file dialog could lead to any folder.
    if (below(2) == 0) {
        desktop.type(word());
        desktop.press({"Return"});
    } else {
        desktop.press({"Escape"});
    }
}

void RandomUseTest::useKeyboard() {
    const QStringList keys{"Tab",  "shift+Tab", "Up",     "Down",      "Left", "Right",    "space", "Prior",
                           "Next", "ctrl+a",    "Delete", "BackSpace", "Home", "ctrl+Tab", "minus", "End"};
    if (below(3) == 0) {
        desktop.type(word());
    } else {
        desktop.press({keys[below(keys.size())], keys[below(keys.size())]});
    }
}

void RandomUseTest::resize() {
    desktop.xdotool({"windowsize", window, QString::number(100 + below(1100)), QString::number(80 + below(800))});
}

void RandomUseTest::act() {
    ++actions;
    if (!program->otherWindows().isEmpty()) {
        answerOtherWindow();
        return;
    }
    const int choice = below(20);
    if (choice == 0) {
        resize();
    } else if (choice < 7) {
        useKeyboard();
    } else {
        const QRect place = DrivenProgram::geometryOf(window);
        const QStringList move{"mousemove", "--window", window, QString::number(below(std::max(1, place.width()))),
                               QString::number(below(std::max(1, place.height())))};
        const QString button = choice < 17 ? "1" : choice == 17 ? "3" : choice == 18 ? "4" : "5";
        desktop.xdotool(move +
                        QStringList{"click", "--repeat", QString::number(1 + below(3)), "--delay", "15", button});
    }
}

bool RandomUseTest::closeOtherWindows() {
    for (int attempt = 0; attempt < 20 && !program->otherWindows().isEmpty(); ++attempt) {
        desktop.press({"Escape"});
        program->waitForNoOtherWindow(500);
    }
    return program->otherWindows().isEmpty();
}

void RandomUseTest::keepsRespondingAndCanStillSave() {
    const int seconds = qEnvironmentVariableIsSet("LMCALTAB_RANDOM_SECONDS")
                            ? qEnvironmentVariableIntValue("LMCALTAB_RANDOM_SECONDS")
                            : 10;
    QTemporaryDir chosen;
    QTemporaryDir home;
    QVERIFY(chosen.isValid() && home.isValid());
    program = std::make_unique<DrivenProgram>(desktop);
    QDir::setCurrent(chosen.path());
    WriteRecord record;
    const QStringList command = record.commandFor(LMCALTAB_PROGRAM);
    QVERIFY(program->start(command.first(),
                           {{"HOME", home.path()},
                            {"XDG_CONFIG_HOME", home.path()},
                            {"XDG_CACHE_HOME", home.path()},
                            {"XDG_DATA_HOME", home.path()},
                            {"XDG_RUNTIME_DIR", home.path()},
                            {"TMPDIR", home.path()}},
                           command.mid(1)));
    window = program->window();
    desktop.xdotool({"windowmove", "--sync", window, "20", "40"});

    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < qint64{seconds} * 1000) {
        act();
        QVERIFY2(answers(), qPrintable(QString("after action %1").arg(actions)));
    }
    qInfo("%d actions in %d s; the longest wait was %lld ms; %d files were saved", actions, seconds,
          static_cast<long long>(longestWaitMs), QDir(chosen.path()).entryList(QDir::Files).size());

    // The program can still save. The Official page is used because a plate of the catalogue can always be drawn.
    QVERIFY(closeOtherWindows());
    desktop.xdotool({"windowsize", "--sync", window, "899", "553"});
    QVERIFY(program->showPage(DrivenProgram::Official));
    QVERIFY(closeOtherWindows());
    QVERIFY(answers());
    program->moveMouse(program->placeOf("saveBtn").center());
    program->click();
    desktop.waitForWindow("Save pattern...");
    desktop.press({"ctrl+a"});
    desktop.type(chosen.filePath("last.pdf"));
    desktop.press({"Return"});
    QTRY_VERIFY(contentsOf(chosen.filePath("last.pdf")).startsWith("%PDF-"));
    QVERIFY(closeOtherWindows());
    QVERIFY(program->isRunning());
    const qint64 process = program->processId();
    program->stop();
    QTRY_VERIFY(record.isComplete(process));

    // Paths in /proc/self/fd/ are expected, because a file may be created without a name. The call that later gives the
    // file its name refers to the file by such a path.
    const QStringList expected{chosen.path() + "/", home.path() + "/", "/dev/", "/proc/self/fd/"};
    const QStringList paths = record.paths();
    for (const QString &path : paths) {
        const auto isWithin = [&path](const QString &folder) { return path.startsWith(folder); };
        QVERIFY2(std::any_of(expected.begin(), expected.end(), isWithin), qPrintable(path));
    }
    if (record.isKept()) {
        QVERIFY(paths.contains(chosen.filePath("last.pdf")));
        qInfo("%d paths in the record of file changes", paths.size());
    }
    // The toolkit's file dialog stores its history in a file of its own; the program itself stores no settings.
    const QString settings = QDir(home.path()).entryList(QDir::Files | QDir::Hidden).join(' ');
    QVERIFY2(settings.isEmpty() || settings == "QtProject.conf", qPrintable(settings));
}

// Changes the pattern 1, 13 or 25 times and closes the window at once, while the pictures of these changes are still
// being drawn.
void RandomUseTest::closesWhileCommandsRun() {
    for (int changes = 1; changes <= 25; changes += 12) {
        DrivenProgram closing(desktop);
        QVERIFY(closing.start(LMCALTAB_PROGRAM, {}));
        QVERIFY(closing.showPage(DrivenProgram::Flexible));
        closing.moveMouse(closing.placeOfText("flexibleWidth").center());
        closing.click();
        QStringList keys{"key", "--delay", "1"};
        std::fill_n(std::back_inserter(keys), changes, "Up");
        desktop.xdotool(keys + QStringList{"alt+F4"});
        QVERIFY2(closing.endsWell(10000), qPrintable(QString::number(changes)));
    }
}

int main(int argc, char **argv) {
    const Desktop desktop{};
    QApplication application(argc, argv);
    RandomUseTest test(desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "random_use_test.moc"
