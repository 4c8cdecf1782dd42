// Tests what the window can do before it has a calibration: messages, recovery after a crash, and actions on
// photographs.
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFrame>
#include <QImage>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include "tests/viewer/drawn_marks.h"
#include "viewer/axes_panel.h"
#include "viewer/session/session_file.h"
#include "viewer/viewer_window.h"
#include "viewer/views/photograph_view.h"

namespace {

const QString exampleFolder = QStringLiteral(VIEWER_EXAMPLE);

QByteArray contentsOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Returns the copy of a running session in this folder; empty if there is none or more than one.
QByteArray copyIn(const QDir &folder) {
    const QStringList copies = folder.entryList({"*.json"}, QDir::Files);
    return copies.size() == 1 ? contentsOf(folder.filePath(copies[0])) : QByteArray();
}

// Writes a small picture without a pattern, and returns its path.
QString blankPhotograph(const QTemporaryDir &folder, const QString &name) {
    QImage blank(64, 48, QImage::Format_Grayscale8);
    blank.fill(128);
    const QString file = folder.filePath(name);
    return blank.save(file) ? file : QString();
}

// Runs the operation, waits for the message that follows, and closes it. Returns the message; empty if none comes.
QString messageOf(const std::function<void()> &operation) {
    QString text;
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&text] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            text = box->text();
            box->close();
        }
    });
    closer.start(20);
    operation();
    return QTest::qWaitFor([&text] { return !text.isEmpty(); }) ? text : QString();
}

QAbstractItemModel &photographsOf(const ViewerWindow &window) {
    return *window.findChild<QListView *>("photographs")->model();
}

template <typename Button>
Button *withText(const ViewerWindow &window, const QString &text) {
    for (Button *button : window.findChildren<Button *>()) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

bool isChecked(const QAbstractItemModel &model, int row) {
    return model.index(row, 0).data(Qt::CheckStateRole).toInt() == Qt::Checked;
}

}  // namespace

class ViewerActionsTest : public QObject {
    Q_OBJECT

private slots:
    void restoresWhatACrashLeft();
    void saysThatACrashWouldLoseTheSession();
    void saysWhatIsWrongWithASession();
    void takesOutAndPutsBackTheSelection();
    void cancelsReading();
    void opensTheExampleAsAnAssembly();
    void showsWhatIsReadInTheChosenPhotograph();
    void showsTheFactorOfTheArrows();
    void takesPatternFilesAndOffersNoResultsBeforeThereAreAny();
    void obeysItsCommandLine();
};

void ViewerActionsTest::restoresWhatACrashLeft() {
    const QTemporaryDir folder;
    const QDir copies(folder.filePath("copies"));
    const QString photograph = blankPhotograph(folder, "blank.png");
    QByteArray left;
    {
        ViewerWindow window(copies.path());
        window.show();
        window.open({photograph});
        QTRY_VERIFY(copyIn(copies).contains("blank.png"));
        window.setArrangement(Arrangement::Assembly);
        QTRY_VERIFY(copyIn(copies).contains("Assembly"));
        left = copyIn(copies);
        window.close();
        QVERIFY2(copyIn(copies).isEmpty(), "a session that the user ended would be restored");
    }
    QFile crashed(copies.filePath("crashed.json"));
    QVERIFY(crashed.open(QIODevice::WriteOnly) && crashed.write(left) > 0);
    crashed.close();
    ViewerWindow window(copies.path());
    window.show();
    auto *restore = withText<QPushButton>(window, "Restore");
    QTRY_VERIFY(restore->isVisible());
    QCOMPARE(photographsOf(window).rowCount(), 0);
    restore->click();
    QCOMPARE(photographsOf(window).rowCount(), 1);
    QVERIFY2(window.findChild<AxesPanel *>()->isVisible(), "the settings are not restored");
    QVERIFY(!restore->isVisible());
}

void ViewerActionsTest::saysThatACrashWouldLoseTheSession() {
    const QTemporaryDir folder;
    // The folder for the copy of the session cannot be made, because its parent is a file.
    ViewerWindow window(blankPhotograph(folder, "blank.png") + "/copies");
    window.open({folder.filePath("blank.png")});
    QTRY_VERIFY(window.statusBar()->currentMessage().contains("A crash would lose this session"));
}

void ViewerActionsTest::saysWhatIsWrongWithASession() {
    const QTemporaryDir folder;
    SessionDocument document;
    document.photographs = {{blankPhotograph(folder, "blank.png"), true}, {folder.filePath("gone.png"), true}};
    const QString file = folder.filePath("some.lmview");
    QCOMPARE(saveSession(file, document), QString());
    ViewerWindow window{QString()};
    const QString later = blankPhotograph(folder, "later.png");
    QString message = messageOf([&] {
        window.open({file});
        window.open({later});
    });
    QVERIFY2(message.contains("1 of the session's 2") && message.contains("gone.png"), qPrintable(message));
    QTRY_COMPARE(photographsOf(window).rowCount(), 3);
    message = messageOf([&] { window.open({folder.filePath("none.lmview")}); });
    QVERIFY2(message.contains("none.lmview"), qPrintable(message));
    QCOMPARE(photographsOf(window).rowCount(), 3);
}

void ViewerActionsTest::takesOutAndPutsBackTheSelection() {
    const QTemporaryDir folder;
    ViewerWindow window{QString()};
    window.show();
    window.open({blankPhotograph(folder, "a.png"), blankPhotograph(folder, "b.png"), blankPhotograph(folder, "c.png")});
    auto *list = window.findChild<QListView *>("photographs");
    QTRY_COMPARE(list->model()->rowCount(), 3);
    list->selectionModel()->select(list->model()->index(1, 0), QItemSelectionModel::ClearAndSelect);
    list->selectionModel()->select(list->model()->index(2, 0), QItemSelectionModel::Select);
    auto *take = withText<QAction>(window, "&Take Out or Put Back");
    for (const bool isOut : {true, false}) {
        take->trigger();
        QVERIFY(isChecked(*list->model(), 0));
        QCOMPARE(isChecked(*list->model(), 1), !isOut);
        QCOMPARE(isChecked(*list->model(), 2), !isOut);
    }
    withText<QAction>(window, "&Remove from the List")->trigger();
    QCOMPARE(list->model()->rowCount(), 1);
    QCOMPARE(list->model()->index(0, 0).data().toString(), QString("a.png"));
    // "Calibrate Anew" must give a new result, which changes the list's data.
    QSignalSpy changes(list->model(), &QAbstractItemModel::dataChanged);
    QTest::qWait(200);
    changes.clear();
    withText<QAction>(window, "&Calibrate Anew")->trigger();
    QTRY_VERIFY(!changes.isEmpty());
}

void ViewerActionsTest::cancelsReading() {
    ViewerWindow window{QString()};
    window.show();
    window.open({exampleFolder});
    auto *cancel = withText<QPushButton>(window, "Cancel");
    QTRY_VERIFY(cancel->isVisible());
    cancel->click();
    QVERIFY(!cancel->isVisible());
    QVERIFY(photographsOf(window).rowCount() < 12);
}

void ViewerActionsTest::opensTheExampleAsAnAssembly() {
    ViewerWindow window{QString()};
    window.show();
    withText<QAction>(window, "Open &Example")->trigger();
    QCOMPARE(photographsOf(window).rowCount(), 12);
    QVERIFY(window.findChild<AxesPanel *>()->isVisible());
    withText<QPushButton>(window, "Cancel")->click();
}

void ViewerActionsTest::showsWhatIsReadInTheChosenPhotograph() {
    ViewerWindow window{QString()};
    window.show();
    window.open({exampleFolder + "/photograph-01.jpg"});
    auto *picture = window.findChild<PhotographView *>();
    QTRY_VERIFY_WITH_TIMEOUT(picture->rect().contains(placeOfText(drawnMarks(*picture), "3").toPoint()), 20000);
}

void ViewerActionsTest::showsTheFactorOfTheArrows() {
    ViewerWindow window{QString()};
    auto *slider = window.findChild<QSlider *>();
    const struct {
        int step;
        const char *shown;
    } cases[] = {{0, "× 1"}, {2, "× 5"}, {12, "× 10000"}};
    for (const auto &one : cases) {
        slider->setValue(one.step);
        QVERIFY2(withText<QLabel>(window, one.shown) != nullptr, one.shown);
    }
}

void ViewerActionsTest::takesPatternFilesAndOffersNoResultsBeforeThereAreAny() {
    const QTemporaryDir folder;
    ViewerWindow window{QString()};
    window.open({folder.filePath("my target.json"), blankPhotograph(folder, "blank.png")});
    QVERIFY(withText<QPushButton>(window, "my target.json") != nullptr);
    QTRY_VERIFY(withText<QLabel>(window, "1 photograph") != nullptr);  // reading has ended, and no calibration follows
    for (const char *action : {"Save &Results...", "Repor&t..."}) {
        QVERIFY2(!withText<QAction>(window, action)->isEnabled(), action);
    }
}

void ViewerActionsTest::obeysItsCommandLine() {
    const struct {
        QStringList arguments;
        int code;
        const char *said;
    } cases[] = {
        {{"--help"}, 0, "Usage: LmView"}, {{"--version"}, 0, "LmView "}, {{"--wide"}, 2, "unknown option --wide"}};
    for (const auto &one : cases) {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(VIEWER_PROGRAM, one.arguments);
        QVERIFY(program.waitForFinished(60000));
        QCOMPARE(program.exitCode(), one.code);
        QVERIFY(program.readAll().contains(one.said));
    }
    // The copy of the program's session shows what the running program has opened.
    const QTemporaryDir folder;
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_DATA_HOME", folder.path());
    program.setProcessEnvironment(environment);
    program.start(VIEWER_PROGRAM, {"--caltab-calibration", blankPhotograph(folder, "first.png"),
                                   blankPhotograph(folder, "second.png")});
    const QDir copies(folder.filePath("LmView/running-sessions"));
    QTRY_VERIFY_WITH_TIMEOUT(copyIn(copies).contains("second.png"), 30000);
    const QByteArray copy = copyIn(copies);
    QVERIFY(copy.contains("first.png") && copy.contains("Assembly"));
    program.kill();
    QVERIFY(program.waitForFinished(30000));
}

QTEST_MAIN(ViewerActionsTest)
#include "viewer_actions_test.moc"
