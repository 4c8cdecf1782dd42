// Tests the way from a field's tool tip to a page of the manual, with the real program in a real window.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/driven_program.h"
#include "tests/shell_script.h"

namespace {

const QString buildTree = LMCALTAB_BUILD_TREE;

// The middle of the area that is painted in the link's colour; -1, -1 if there is none.
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

class ToolTipEndToEndTest : public QObject {
    Q_OBJECT

private slots:
    void linkLeadsToTheManual_data();
    void linkLeadsToTheManual();

private:
    // Starts the program that is below this folder and shows its Halcon page. A script replaces the browser.
    bool startProgram(const QString &root);
    QString hover(QPoint position) {
        program.moveMouse(position);
        return program.waitForOtherWindow();
    }

    const Desktop desktop{};
    QTemporaryDir folder;
    DrivenProgram program{desktop};
};

bool ToolTipEndToEndTest::startProgram(const QString &root) {
    program.stop();
    QFile::remove(folder.filePath("opened"));
    installScript(folder.filePath("xdg-open"), "printf '%s\\n' \"$@\" >>'" + folder.filePath("opened") + "'");
    const QString path = folder.path() + ":" + qEnvironmentVariable("PATH");
    return program.start(root + "/bin/LmCalTab", {{"PATH", path}}) && program.showPage(DrivenProgram::Halcon);
}

void ToolTipEndToEndTest::linkLeadsToTheManual_data() {
    QTest::addColumn<bool>("isInstalled");
    QTest::newRow("build tree") << false;
    QTest::newRow("installed and moved") << true;
}

void ToolTipEndToEndTest::linkLeadsToTheManual() {
    QFETCH(bool, isInstalled);
    QString root = buildTree;
    if (isInstalled) {
        QCOMPARE(QProcess::execute(LMCALTAB_CMAKE, {"--install", buildTree, "--prefix", folder.filePath("old")}), 0);
        root = folder.filePath("a new place");
        QVERIFY(QDir().rename(folder.filePath("old"), root));
    }
    QVERIFY(startProgram(root));

    // The buttons and the text of a spin box belong to different widgets, and both must show a tip. Here, the mouse is
    // moved over the buttons; after that, it is moved over the text of another spin box.
    const QRect field = program.placeOf("halconOuterSize");
    QVERIFY(!hover({field.right() - 6, field.center().y()}).isEmpty());
    desktop.press({"Shift_L"});
    QVERIFY(program.waitForNoOtherWindow(2000));

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

    // The toolkit's own tip would close while the mouse moves to the link. After a delay, a tool-tip
    // event for the widget under the mouse could also replace or close the tip. The wait is longer than this delay.
    program.moveMouse(place.topLeft() + link);
    QTest::qWait(1500);
    QCOMPARE(program.otherWindows(), QStringList{tip});
    program.click();

    const QString page = root + "/share/lmcaltab/manual/guides/calibration/patterns.html";
    QVERIFY(QFileInfo::exists(page));
    // The spaces in the folder's name are encoded as in any URL.
    QTRY_COMPARE(linesOf(folder.filePath("opened")), QStringList{QUrl("file:///" + page).toString(QUrl::FullyEncoded)});
    // Pressing the mouse button also closes the tip.
    QVERIFY(program.waitForNoOtherWindow(2000));
}

QTEST_MAIN(ToolTipEndToEndTest)
#include "tool_tip_test.moc"
