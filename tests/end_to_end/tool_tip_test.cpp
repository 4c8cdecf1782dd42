// From hovering a field to the page of the manual, with the real program in a real window.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/driven_program.h"
#include "tests/end_to_end/recording_program.h"

class ToolTipEndToEndTest : public QObject {
    Q_OBJECT

public:
    explicit ToolTipEndToEndTest(const Desktop &userDesktop)
        : desktop(userDesktop), browser(folder.filePath("tools/xdg-open")), program(userDesktop) {}

private slots:
    void cleanup();

    void linkLeadsToTheManual_data();
    void linkLeadsToTheManual();
    void showsOverTextAndButtonsUntilAKeyIsPressed_data();
    void showsOverTextAndButtonsUntilAKeyIsPressed();

private:
    bool startProgram(const QString &root);
    QString hover(QPoint position);

    const Desktop &desktop;
    QTemporaryDir folder;
    RecordingProgram browser;
    DrivenProgram program;
    QString startedRoot;
};

namespace {

const QString buildTree = LMCALTAB_BUILD_TREE;

QString install(const QString &prefix) {
    const int code = QProcess::execute(LMCALTAB_CMAKE, {"--install", buildTree, "--prefix", prefix});
    return code == 0 ? prefix : QString();
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

void ToolTipEndToEndTest::cleanup() {
    program.moveMouse(program.placeOf("groupBox").center());
    desktop.press({"Shift_L"});
    program.waitForNoOtherWindow(3000);
    browser.forget();
}

// Starts the program in this root; if it is already running, nothing is done.
bool ToolTipEndToEndTest::startProgram(const QString &root) {
    if (program.isRunning() && root == startedRoot) {
        return true;
    }
    program.stop();
    startedRoot = root;
    const QString path = folder.filePath("tools") + ":" + qEnvironmentVariable("PATH");
    return program.start(root + "/bin/LmCalTab", {{"PATH", path}}) && program.showPage(DrivenProgram::Halcon);
}

QString ToolTipEndToEndTest::hover(QPoint position) {
    program.moveMouse(position);
    return program.waitForOtherWindow();
}

void ToolTipEndToEndTest::linkLeadsToTheManual_data() {
    QTest::addColumn<bool>("isInstalled");
    QTest::addColumn<bool>("isMoved");
    QTest::newRow("build tree") << false << false;
    QTest::newRow("installed") << true << false;
    QTest::newRow("installed and moved") << true << true;
}

void ToolTipEndToEndTest::linkLeadsToTheManual() {
    QFETCH(bool, isInstalled);
    QFETCH(bool, isMoved);
    QString root = isInstalled ? install(folder.filePath(isMoved ? "an old place" : "a place")) : buildTree;
    QVERIFY(!root.isEmpty());
    if (isMoved) {
        QVERIFY(QDir().rename(root, folder.filePath("another place")));
        root = folder.filePath("another place");
    }
    QVERIFY(startProgram(root));

    // The mouse is in the upper part of the field, so that the tip overlaps the field and the mouse crosses no other
    // widget on its way to the link.
    const QRect text = program.placeOfText("halconGridSpacing");
    const QPoint mouse(text.center().x(), text.top() + 2);
    const QString tip = hover(mouse);
    QVERIFY(!tip.isEmpty());
    const QRect place = DrivenProgram::geometryOf(tip);
    QCOMPARE(place.topLeft(), mouse + QPoint(2, 16));
    const QPoint link = linkIn(DrivenProgram::contentsOf(tip));
    QVERIFY(link.x() >= 0);

    // The toolkit's own tip would close while the mouse moves to it. The wait is longer than the time after which a tip
    // is shown or closed for the widget under the mouse.
    program.moveMouse(place.topLeft() + link);
    QTest::qWait(1500);
    QCOMPARE(program.otherWindows(), QVector<QString>{tip});
    program.click();

    const QString page = root + "/share/lmcaltab/manual/guides/calibration/patterns.html";
    QTRY_COMPARE(browser.runs().size(), 1);
    // The spaces in the folder's name are encoded as in any URL.
    QCOMPARE(browser.runs()[0], QStringList{QUrl("file:///" + page).toString(QUrl::FullyEncoded)});
    QCOMPARE(QFileInfo(QUrl(browser.runs()[0][0]).toLocalFile()).canonicalFilePath(),
             QFileInfo(page).canonicalFilePath());
    QVERIFY(QFileInfo::exists(page));
    // Pressing the mouse button also closes the tip.
    QVERIFY(program.waitForNoOtherWindow(2000));
}

void ToolTipEndToEndTest::showsOverTextAndButtonsUntilAKeyIsPressed_data() {
    QTest::addColumn<QString>("field");
    for (const char *field : {"halconOuterSize", "halconGridSpacing", "halconThickness"}) {
        QTest::newRow(field) << field;
    }
}

void ToolTipEndToEndTest::showsOverTextAndButtonsUntilAKeyIsPressed() {
    QFETCH(QString, field);
    QVERIFY(startProgram(buildTree));
    const QRect place = program.placeOf(field);
    for (const QPoint position : {program.placeOfText(field).center(), QPoint(place.right() - 6, place.center().y())}) {
        const QString tip = hover(position);
        QVERIFY(!tip.isEmpty());
        QTRY_COMPARE(DrivenProgram::geometryOf(tip).topLeft(), position + QPoint(2, 16));
    }
    desktop.press({"Shift_L"});
    QVERIFY(program.waitForNoOtherWindow(1500));
    QVERIFY(!hover(program.placeOfText(field).center()).isEmpty());
    // Moving the mouse to a widget without a tip closes the tip.
    program.moveMouse(program.placeOf("halconEncodeNothing").center());
    QVERIFY(program.waitForNoOtherWindow(3000));
}

int main(int argc, char **argv) {
    const Desktop desktop;
    useDesktop(desktop);
    const QApplication application(argc, argv);
    ToolTipEndToEndTest test(desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "tool_tip_test.moc"
