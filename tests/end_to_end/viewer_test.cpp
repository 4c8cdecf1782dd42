// Tests the way from the button in LmCalTab to the file of an assembly, with the real programs in real windows.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/driven_program.h"
#include "tests/viewer/example_truth.h"

class ViewerEndToEndTest : public QObject {
    Q_OBJECT

public:
    explicit ViewerEndToEndTest(const Desktop &usersDesktop) : desktop(usersDesktop) {}

private slots:
    void buttonLeadsToTheFileOfAnAssembly();

private:
    QString windowNamed(const QString &title) const {
        return desktop.xdotool({"search", "--onlyvisible", "--name", "^" + title + "$"}).split('\n').value(0);
    }

    const Desktop &desktop;
};

void ViewerEndToEndTest::buttonLeadsToTheFileOfAnAssembly() {
    const QTemporaryDir home;
    const QTemporaryDir results;
    DrivenProgram program(desktop);
    QVERIFY(program.start(LMCALTAB_BUILD_TREE "/bin/LmCalTab", {{"XDG_DATA_HOME", home.path()}}));
    QVERIFY(program.showPage(DrivenProgram::Assembly));
    program.moveMouse(program.placeOf("calibrateBtn").center());
    program.click();
    desktop.waitForWindow("LmView");
    desktop.press({"ctrl+e"});  // Open Example

    // "Save Results..." has no effect until there is a result.
    const QString dialog = "Save Results to a Folder";
    for (int second = 0; second < 120 && windowNamed(dialog).isEmpty(); ++second) {
        desktop.press({"ctrl+r"});
        QTest::qWait(1000);
    }
    desktop.waitForWindow(dialog);
    desktop.press({"ctrl+a"});
    desktop.type(results.path());
    desktop.press({"Return"});
    const QString file = results.filePath("assembly.json");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(file), 20000);
    QTRY_VERIFY_WITH_TIMEOUT(greatestCornerError(file).has_value(), 5000);
    QVERIFY2(*greatestCornerError(file) < 0.05, qPrintable(QString("%1 mm").arg(*greatestCornerError(file))));

    desktop.waitForWindow("Save Results");
    desktop.press({"Return"});
    desktop.waitForWindow("LmView");
    desktop.press({"ctrl+q"});
    QTRY_VERIFY_WITH_TIMEOUT(windowNamed("LmView").isEmpty(), 10000);
    QVERIFY2(QDir(home.path()).entryList({"*.json"}, QDir::Files).isEmpty(), "a copy for recovery is left");
}

int main(int argumentCount, char **arguments) {
    const Desktop desktop{};
    const QApplication application(argumentCount, arguments);
    ViewerEndToEndTest test(desktop);
    return QTest::qExec(&test, argumentCount, arguments);
}

#include "viewer_test.moc"
