// The unchanged program on a desktop, with the scripted library instead of the real one: which library calls a user's
// clicks cause.
#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/driven_program.h"
#include "tests/generator/recorded_calls.h"

class RecordedProgramTest : public QObject {
    Q_OBJECT

public:
    explicit RecordedProgramTest(const Desktop &userDesktop) : desktop(userDesktop), program(userDesktop) {}

private slots:
    void init() {
        folder = std::make_unique<QTemporaryDir>();
        seenCalls = 0;
        slot = 1;
    }
    void cleanup() { program.stop(); }

    void inputsOfEveryKindUpdateOnceUntilTheWindowIsClosed();
    void savesWhatIsShown();
    void everyClickStartsTheViewerWithOneArgument();
    void doesWithoutOpenGlButLeavesItToTheViewer();

private:
    void start();
    void installViewer(const QString &shellCommand) const;
    void click(const QString &name) const { program.clickOn(program.placeOf(name)); }
    QStringList newCalls() const { return linesOf("record").mid(seenCalls); }
    // The lines of a file in the folder.
    QStringList linesOf(const QString &name) const;
    // Expects that the next calls, after those that were expected before, are these.
    void expect(const QStringList &calls);
    void expectUpdate(const QStringList &patternWrites) { expect(recorded_calls::updateCalls(++slot, patternWrites)); }

    const Desktop &desktop;
    DrivenProgram program;
    std::unique_ptr<QTemporaryDir> folder;
    int seenCalls = 0;
    int slot = 0;
};

QStringList RecordedProgramTest::linesOf(const QString &name) const {
    QFile file(folder->filePath(name));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QStringList lines = QString::fromLocal8Bit(file.readAll()).split('\n');
    lines.removeLast();
    return lines;
}

void RecordedProgramTest::start() {
    QFile script(folder->filePath("script.json"));
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write(R"({"nodes": {"/Path/Application/LmView": ")" + folder->filePath("viewer").toUtf8() + R"("}})");
    script.close();
    QVERIFY(program.start(LMCALTAB_BUILD_TREE "/bin/LmCalTab",
                          {{"QT_XCB_GL_INTEGRATION", QString()},  // removed: the program sets it itself
                           {"LD_LIBRARY_PATH", LMCALTAB_SCRIPTED_LIBRARY_FOLDER},
                           {"LMLIB64_RECORD", folder->filePath("record")},
                           {"LMLIB64_SCRIPT", script.fileName()}}));
    QTRY_VERIFY_WITH_TIMEOUT(newCalls().contains("lmLibErase /Execute/1"), 20000);
    seenCalls = newCalls().indexOf("lmLibErase /Execute/1") + 1;
}

void RecordedProgramTest::installViewer(const QString &shellCommand) const {
    QFile file(folder->filePath("viewer"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\n" + shellCommand.toLocal8Bit() + "\n");
    file.close();
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

void RecordedProgramTest::expect(const QStringList &calls) {
    QTRY_VERIFY_WITH_TIMEOUT(newCalls().size() >= calls.size(), 20000);
    QCOMPARE(newCalls().mid(0, calls.size()), calls);
    seenCalls += calls.size();
}

void RecordedProgramTest::inputsOfEveryKindUpdateOnceUntilTheWindowIsClosed() {
    start();
    expectUpdate({"lmLibSetString @/Type PlateC", "lmLibSetDouble @/GridSpacing 24.75",
                  "lmLibSetDouble @/Thickness 3.5", "lmLibSetBool @/Polarity true"});
    expect({"lmLibGetString /Path/Manual [no result]"});
    click("officialPattern");
    desktop.press({"Down", "Return"});
    expectUpdate({"lmLibSetString @/Type PlateB", "lmLibSetDouble @/GridSpacing 12.25",
                  "lmLibSetDouble @/Thickness 2.5", "lmLibSetBool @/Polarity true"});

    program.showPage(DrivenProgram::Flexible);
    const auto flexible = [](const char *width, const char *offset, const char *polarity) {
        return QStringList{"lmLibSetString @/Type Flexible",
                           QString("lmLibSetInt @/GridSize/\\0 ") + width,
                           "lmLibSetInt @/GridSize/\\1 15",
                           "lmLibSetDouble @/GridSpacing 12.5",
                           QString("lmLibSetDouble @/Offset/\\0 ") + offset,
                           "lmLibSetDouble @/Offset/\\1 0",
                           QString("lmLibSetBool @/Polarity ") + polarity};
    };
    expectUpdate(flexible("15", "0", "true"));
    click("flexibleWidth");
    desktop.press({"Up"});
    expectUpdate(flexible("17", "0", "true"));
    click("flexibleOffsetXSpacings");
    desktop.press({"ctrl+a"});  // selects the number
    desktop.type("3");
    expectUpdate(flexible("17", "18.75", "true"));
    click("flexiblePolarity");
    expectUpdate(flexible("17", "18.75", "false"));

    program.showPage(DrivenProgram::Halcon);
    expectUpdate({"lmLibSetDouble @/GridSpacing 12.5", "lmLibSetDouble @/Thickness 0", "lmLibSetBool @/Encoding true"});
    // The radio button that is switched off and the one that is switched on each cause an update.
    click("halconEncodeNothing");
    const QStringList nothing{"lmLibSetDouble @/GridSpacing 12.5", "lmLibSetBool @/Encoding false"};
    expectUpdate(nothing);
    expectUpdate(nothing);

    desktop.press({"alt+F4"});
    QTRY_VERIFY(!program.isRunning());
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(newCalls(), QStringList{"lmLibFinalize"});
}

void RecordedProgramTest::savesWhatIsShown() {
    start();
    program.showPage(DrivenProgram::Assembly);
    QTRY_VERIFY_WITH_TIMEOUT(newCalls().contains("lmLibErase /Execute/3"), 20000);
    click("saveBtn");
    desktop.waitForWindow("Save pattern...");
    desktop.type(folder->filePath("target"));
    desktop.press({"Return"});
    QTRY_VERIFY_WITH_TIMEOUT(newCalls().contains("lmLibErase /Execute/4"), 20000);
    const QStringList saving = newCalls().filter("/Execute/4/");
    QCOMPARE(saving.first(), "lmLibSetString /Execute/4/Parameters/Filename " + folder->filePath("target.pdf"));
    QCOMPARE(saving.filter("/AssemblyPattern ").size(), 5);
    QVERIFY(saving.contains("lmLibSetString /Execute/4/Command GenerateCalibrationPattern"));
}

void RecordedProgramTest::everyClickStartsTheViewerWithOneArgument() {
    start();
    click("calibrateBtn");
    desktop.waitForWindow("Error");
    desktop.press({"Return"});
    QVERIFY(program.waitForNoOtherWindow(20000));

    installViewer(R"(printf '%s:%s\n' "$#" "$*" >> ')" + folder->filePath("started") + "'");
    QStringList expected;
    for (int clicks = 0; clicks < 2; ++clicks) {
        click("calibrateBtn");
        expected << "1:--caltab-calibration";
        QTRY_COMPARE_WITH_TIMEOUT(linesOf("started"), expected, 20000);
    }
}

void RecordedProgramTest::doesWithoutOpenGlButLeavesItToTheViewer() {
    installViewer("echo \"${QT_XCB_GL_INTEGRATION-own choice}\" > '" + folder->filePath("seen") + "'");
    start();
    click("calibrateBtn");
    QTRY_COMPARE_WITH_TIMEOUT(linesOf("seen"), QStringList{"own choice"}, 20000);

    QFile file(QString("/proc/%1/maps").arg(program.processId()));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray loaded = file.readAll();
    QVERIFY(loaded.contains("libqxcb"));
    QVERIFY(!loaded.contains("libGLX_"));  // a driver
}

int main(int argc, char **argv) {
    const Desktop desktop;
    useDesktop(desktop);
    const QApplication application(argc, argv);
    RecordedProgramTest test(desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "recorded_program_test.moc"
