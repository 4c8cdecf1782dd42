// From hovering a field to the page of the manual, with the real program in a real window.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QScreen>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/driven_program.h"
#include "tests/end_to_end/recording_program.h"

class ToolTipEndToEndTest : public QObject {
    Q_OBJECT

public:
    explicit ToolTipEndToEndTest(const Desktop &userDesktop) : desktop(userDesktop) {}

private slots:
    void initTestCase();
    void cleanup();

    void linkLeadsToTheManual_data();
    void linkLeadsToTheManual();
    void showsOverTextAndButtons_data();
    void showsOverTextAndButtons();
    void keyPressClosesTheTip();
    void staysOnTheScreen_data();
    void staysOnTheScreen();

private:
    bool startProgram(const QString &root);
    QString hover(QPoint position);

    const Desktop &desktop;
    QTemporaryDir folder;
    QScopedPointer<RecordingProgram> browser;
    QScopedPointer<DrivenProgram> program;
    QString startedRoot;
};

namespace {

const QString buildTree = LMCALTAB_BUILD_TREE;

QString install(const QString &prefix) {
    QProcess cmake;
    cmake.start(LMCALTAB_CMAKE, {"--install", buildTree, "--prefix", prefix});
    cmake.waitForFinished(60000);
    return cmake.exitStatus() == QProcess::NormalExit && cmake.exitCode() == 0 ? prefix : QString();
}

// The middle of what is painted in the colour of the link.
QPoint linkIn(const QImage &tip) {
    QRect link;
    for (int y = 0; y < tip.height(); ++y) {
        for (int x = 0; x < tip.width(); ++x) {
            if (tip.pixelColor(x, y) == QColor(0, 0, 255)) {
                link |= QRect(x, y, 1, 1);
            }
        }
    }
    return link.isNull() ? QPoint(-1, -1) : link.center();
}

}  // namespace

void ToolTipEndToEndTest::initTestCase() {
    QVERIFY(folder.isValid());
    browser.reset(new RecordingProgram(folder.filePath("tools/xdg-open")));
    program.reset(new DrivenProgram(desktop));
}

void ToolTipEndToEndTest::cleanup() {
    program->moveMouse(program->placeOf("groupBox").center());
    desktop.press({"Shift_L"});
    program->waitForNoOtherWindow(3000);
    browser->forget();
}

// Goes on with the program that runs when it is that one.
bool ToolTipEndToEndTest::startProgram(const QString &root) {
    if (program->isRunning() && root == startedRoot) {
        return true;
    }
    program->stop();
    startedRoot = root;
    const QString path = folder.filePath("tools") + ":" + qEnvironmentVariable("PATH");
    return program->start(root + "/bin/LmCalTab", {{"PATH", path}}) && program->showPage(DrivenProgram::Halcon);
}

QString ToolTipEndToEndTest::hover(QPoint position) {
    program->moveMouse(position);
    return program->waitForOtherWindow();
}

void ToolTipEndToEndTest::linkLeadsToTheManual_data() {
    QTest::addColumn<QString>("where");
    QTest::newRow("build tree") << "build tree";
    QTest::newRow("installed") << "installed";
    QTest::newRow("installed and moved") << "moved";
}

void ToolTipEndToEndTest::linkLeadsToTheManual() {
    QFETCH(QString, where);
    QString root = buildTree;
    if (where != "build tree") {
        root = install(folder.filePath(where + "/a place"));
        QVERIFY(!root.isEmpty());
    }
    if (where == "moved") {
        QVERIFY(QDir().rename(root, folder.filePath("another place")));
        root = folder.filePath("another place");
    }
    QVERIFY(startProgram(root));

    // In the upper part of the field, so that the tip overlaps it and no other widget lies on the way.
    const QRect text = program->placeOfText("halconGridSpacing");
    const QPoint mouse(text.center().x(), text.top() + 2);
    const QString tip = hover(mouse);
    QVERIFY(!tip.isEmpty());
    const QRect place = DrivenProgram::geometryOf(tip);
    QCOMPARE(place.topLeft(), mouse + QPoint(2, 16));
    const QPoint link = linkIn(DrivenProgram::contentsOf(tip));
    QVERIFY(link.x() >= 0);

    // The standard tip would be gone on the way. The rest in the tip outlasts the time after which a tip is
    // shown or closed for what is hovered.
    program->moveMouse(place.topLeft() + link);
    QTest::qWait(1500);
    QCOMPARE(program->otherWindows(), QVector<QString>{tip});
    program->click();

    const QString page = root + "/share/lmcaltab/manual/guides/calibration/patterns.html";
    QTRY_COMPARE(browser->runs().size(), 1);
    // The blanks in the folder's name are written as an address has them.
    QCOMPARE(browser->runs()[0], QStringList{QUrl("file:///" + page).toString(QUrl::FullyEncoded)});
    QCOMPARE(QFileInfo(QUrl(browser->runs()[0][0]).toLocalFile()).canonicalFilePath(),
             QFileInfo(page).canonicalFilePath());
    QVERIFY(QFileInfo::exists(page));
    // The click was a press, too.
    QVERIFY(program->waitForNoOtherWindow(2000));
}

void ToolTipEndToEndTest::showsOverTextAndButtons_data() {
    QTest::addColumn<QString>("field");
    QTest::newRow("outer size") << "halconOuterSize";
    QTest::newRow("grid spacing") << "halconGridSpacing";
    QTest::newRow("thickness") << "halconThickness";
}

void ToolTipEndToEndTest::showsOverTextAndButtons() {
    QFETCH(QString, field);
    QVERIFY(startProgram(buildTree));
    const QRect place = program->placeOf(field);
    for (const QPoint position :
         {program->placeOfText(field).center(), QPoint(place.right() - 6, place.center().y())}) {
        const QString tip = hover(position);
        QVERIFY(!tip.isEmpty());
        QTRY_COMPARE(DrivenProgram::geometryOf(tip).topLeft(), position + QPoint(2, 16));
    }
    // A child without a tip closes it.
    program->moveMouse(program->placeOf("halconEncodeNothing").center());
    QVERIFY(program->waitForNoOtherWindow(3000));
}

void ToolTipEndToEndTest::keyPressClosesTheTip() {
    QVERIFY(startProgram(buildTree));
    QVERIFY(!hover(program->placeOfText("halconGridSpacing").center()).isEmpty());
    QTest::qWait(1000);
    QCOMPARE(program->otherWindows().size(), 1);
    desktop.press({"Shift_L"});
    QVERIFY(program->waitForNoOtherWindow(1500));
}

void ToolTipEndToEndTest::staysOnTheScreen_data() {
    QTest::addColumn<QPoint>("mouse");
    const QSize screen = QGuiApplication::primaryScreen()->size();
    QTest::newRow("left") << QPoint(3, 300);
    QTest::newRow("top") << QPoint(400, 3);
    QTest::newRow("right") << QPoint(screen.width() - 4, 300);
    QTest::newRow("bottom") << QPoint(400, screen.height() - 4);
    QTest::newRow("bottom right corner") << QPoint(screen.width() - 4, screen.height() - 4);
}

void ToolTipEndToEndTest::staysOnTheScreen() {
    QFETCH(QPoint, mouse);
    QVERIFY(startProgram(buildTree));
    // The window is moved so that the field comes to lie under where the mouse is to be.
    const QPoint field = program->placeOfText("halconGridSpacing").center();
    const QPoint contents = program->placeOf("MainWindow").topLeft();
    QVERIFY(program->moveWindow(contents + mouse - field));
    QVERIFY2(program->placeOf("halconGridSpacing").contains(mouse),
             "The window manager did not let the window go there");
    const QString tip = hover(mouse);
    QVERIFY(!tip.isEmpty());
    const QRect place = DrivenProgram::geometryOf(tip);
    QVERIFY(QGuiApplication::primaryScreen()->geometry().contains(place));
    QVERIFY(!place.contains(mouse));
}

int main(int argc, char **argv) {
    const Desktop desktop;
    useDesktop(desktop);
    const QApplication application(argc, argv);
    ToolTipEndToEndTest test(desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "tool_tip_test.moc"
