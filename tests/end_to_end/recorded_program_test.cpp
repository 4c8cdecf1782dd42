// The unchanged program on a desktop, with the scripted library in the place of ours: what a user's clicks make it
// call, page by page and call by call.
#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>
#include <map>

#include "generator/main_window.h"
#include "tests/end_to_end/desktop.h"
#include "tests/generator/recorded_calls.h"

namespace {

const QString windowTitle = "Generate Calibration Pattern";

// Where to click, by object name, and the tabs by "tab" and their index. Taken from a window of this process, whose
// fonts and style are the program's.
std::map<QString, QPoint> findPlaces() {
    scripted_lmlib64::loadDefaultScript();
    MainWindow window;
    window.show();
    if (!QTest::qWaitForWindowExposed(&window)) {
        qFatal("The window does not appear");
    }
    std::map<QString, QPoint> places;
    auto *pages = window.findChild<QTabWidget *>("patternType");
    for (int page = 0; page < pages->count(); ++page) {
        pages->setCurrentIndex(page);
        QCoreApplication::processEvents();
        places["tab" + QString::number(page)] =
            pages->tabBar()->mapTo(&window, pages->tabBar()->tabRect(page).center());
        for (const auto *widget : window.findChildren<QWidget *>()) {
            if (widget->isVisible() && !widget->objectName().isEmpty()) {
                // Left of the middle, where a button has its mark or text and a spin box its number.
                const QPoint inside(qMin(widget->width() / 2, 30), widget->height() / 2);
                places[widget->objectName()] = widget->mapTo(&window, inside);
            }
        }
    }
    return places;
}

QStringList linesOf(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QStringList lines = QString::fromLocal8Bit(file.readAll()).split('\n');
    lines.removeLast();
    return lines;
}

// The calls that load the catalogue of the default script.
QStringList catalogueCalls() {
    QStringList calls{"lmLibMakeUniqueItem /Execute",          "lmLibSetBool $/Parameters/ListCalTabs true",
                      "lmLibSetString $/Command GetModelInfo", "lmLibGetType $/Command",
                      "lmLibWaitForType $/Command 1 true",     "lmLibGetType $/Result/ErrorSymbol",
                      "lmLibGetCount $/Result/CalTabs"};
    for (int plate = 2; plate >= 0; --plate) {
        const QString item = QString(" $/Result/CalTabs/\\%1/").arg(plate);
        calls << "lmLibGetString" + item + "Name";
        for (const char *value : {"Type", "GridSpacing", "Thickness"}) {
            const char *get = qstrcmp(value, "Type") == 0 ? "lmLibGetString" : "lmLibGetDouble";
            calls << "lmLibGetType" + item + value << "lmLibGetType" + item + value << get + item + value;
        }
    }
    return recorded_calls::inSlot(1, calls << "lmLibErase $");
}

}  // namespace

class RecordedProgramTest : public QObject {
    Q_OBJECT

public:
    explicit RecordedProgramTest(const Desktop &userDesktop) : desktop(userDesktop) {}

private slots:
    void initTestCase() { places = findPlaces(); }
    void init();
    void cleanup();
    void everyPageIsGeneratedAsItsInputsSay();
    void savesWhatIsShown();
    void everyClickStartsTheViewerWithOneArgument();
    void doesWithoutOpenGlButLeavesItToTheViewer();

private:
    void start();
    void installViewer(const QString &shellCommand) const;
    void click(const QString &name) { desktop.click(window, places.at(name)); }
    void typeInto(const QString &name, const QString &value);
    QStringList newCalls() const { return linesOf(record).mid(seenCalls); }
    // Expects these calls, and only these, since the last ones expected.
    void expect(const QStringList &calls);
    void expectUpdate(const QStringList &patternWrites);

    const Desktop &desktop;
    std::map<QString, QPoint> places;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<QProcess> program;
    QString record;
    QString window;
    int seenCalls = 0;
    int slot = 0;
};

void RecordedProgramTest::init() {
    folder = std::make_unique<QTemporaryDir>();
    record = folder->filePath("record");
    seenCalls = 0;
    slot = 1;
}

void RecordedProgramTest::cleanup() {
    if (program->state() != QProcess::NotRunning) {
        program->kill();
        program->waitForFinished();
    }
}

void RecordedProgramTest::start() {
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QT_XCB_GL_INTEGRATION");  // the program sees to that itself
    environment.insert("LD_LIBRARY_PATH", LMCALTAB_SCRIPTED_LIBRARY_FOLDER);
    environment.insert("LMLIB64_RECORD", record);
    environment.insert("LMLIB64_SCRIPT", folder->filePath("script.json"));
    QFile script(folder->filePath("script.json"));
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write(R"({"nodes": {"/Path/Application/LmView": ")" + folder->filePath("viewer").toUtf8() + R"("}})");
    script.close();

    program = std::make_unique<QProcess>();
    program->setProcessEnvironment(environment);
    program->setProcessChannelMode(QProcess::ForwardedChannels);
    program->start(LMCALTAB_PROGRAM, QStringList());
    QVERIFY(program->waitForStarted());
    window = desktop.waitForWindow(windowTitle);
    expect(catalogueCalls());
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

void RecordedProgramTest::expectUpdate(const QStringList &patternWrites) {
    expect(recorded_calls::updateCalls(++slot, patternWrites));
}

// Replaces the number in a spin box and leaves the box's suffix alone.
void RecordedProgramTest::typeInto(const QString &name, const QString &value) {
    click(name);
    desktop.press({"ctrl+a"});
    desktop.type(value);
}

void RecordedProgramTest::everyPageIsGeneratedAsItsInputsSay() {
    start();
    const QStringList official{"lmLibSetString @/Type PlateC", "lmLibSetDouble @/GridSpacing 24.75",
                               "lmLibSetDouble @/Thickness 3.5", "lmLibSetBool @/Polarity true"};
    expectUpdate(official);
    expect({"lmLibGetString /Path/Manual [no result]"});
    click("officialPattern");
    desktop.press({"Down", "Return"});
    expectUpdate({"lmLibSetString @/Type PlateB", "lmLibSetDouble @/GridSpacing 12.25",
                  "lmLibSetDouble @/Thickness 2.5", "lmLibSetBool @/Polarity true"});

    click("tab1");
    expectUpdate({"lmLibSetString @/Type SingleCustom", "lmLibSetDouble @/GridSpacing 12",
                  "lmLibSetDouble @/Thickness 0", "lmLibSetBool @/Polarity true"});
    click("singlePolarity");
    expectUpdate({"lmLibSetString @/Type SingleCustom", "lmLibSetDouble @/GridSpacing 12",
                  "lmLibSetDouble @/Thickness 0", "lmLibSetBool @/Polarity false"});

    click("tab2");
    const auto flexible = [](const char *width, const char *offset) {
        return QStringList{"lmLibSetString @/Type Flexible",
                           QString("lmLibSetInt @/GridSize/\\0 ") + width,
                           "lmLibSetInt @/GridSize/\\1 15",
                           "lmLibSetDouble @/GridSpacing 12.5",
                           QString("lmLibSetDouble @/Offset/\\0 ") + offset,
                           "lmLibSetDouble @/Offset/\\1 0",
                           "lmLibSetBool @/Polarity true"};
    };
    expectUpdate(flexible("15", "0"));
    click("flexibleWidth");
    desktop.press({"Up"});
    expectUpdate(flexible("17", "0"));
    typeInto("flexibleOffsetXSpacings", "3");
    expectUpdate(flexible("17", "18.75"));

    click("tab3");
    const QStringList assembly{"lmLibSetString @/Type Assembly", "lmLibSetInt @/AssemblyPattern 0",
                               "lmLibSetDouble @/GridSpacing 12", "lmLibSetBool @/Polarity true"};
    expectUpdate(assembly);
    typeInto("assemblyNumberOfPatterns", "7");
    expectUpdate(assembly);

    click("tab4");
    expectUpdate({"lmLibSetDouble @/GridSpacing 12.5", "lmLibSetDouble @/Thickness 0", "lmLibSetBool @/Encoding true"});
    // The button that goes off and the one that goes on both update.
    const QStringList offset{"lmLibSetDouble @/GridSpacing 12.5", "lmLibSetDouble @/Offset/\\0 0",
                             "lmLibSetDouble @/Offset/\\1 0", "lmLibSetBool @/Encoding true"};
    click("halconEncodeOffset");
    expectUpdate(offset);
    expectUpdate(offset);
    click("halconEncodeNothing");
    const QStringList nothing{"lmLibSetDouble @/GridSpacing 12.5", "lmLibSetBool @/Encoding false"};
    expectUpdate(nothing);
    expectUpdate(nothing);

    desktop.press({"alt+F4"});
    QVERIFY(program->waitForFinished());
    QCOMPARE(program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(program->exitCode(), 0);
    expect({"lmLibFinalize"});
    QCOMPARE(newCalls(), QStringList());
}

void RecordedProgramTest::savesWhatIsShown() {
    start();
    click("tab3");
    QTRY_VERIFY_WITH_TIMEOUT(linesOf(record).contains("lmLibErase /Execute/3"), 20000);
    seenCalls = linesOf(record).size();

    click("saveBtn");
    desktop.waitForWindow("Save pattern...");
    desktop.type(folder->filePath("target"));
    desktop.press({"Return"});

    QStringList calls{"lmLibMakeUniqueItem /Execute",
                      "lmLibSetString $/Parameters/Filename " + folder->filePath("target.pdf")};
    for (int i = 0; i < 5; ++i) {
        const QString item = QString(" $/Parameters/Patterns/\\%1/").arg(i);
        calls << "lmLibSetString" + item + "Type Assembly"
              << "lmLibSetInt" + item + QString("AssemblyPattern %1").arg(i)
              << "lmLibSetDouble" + item + "GridSpacing 12"
              << "lmLibSetBool" + item + "Polarity true";
    }
    calls << "lmLibSetString $/Command GenerateCalibrationPattern"
          << "lmLibGetType $/Command"
          << "lmLibWaitForType $/Command 1 true"
          << "lmLibGetType $/Result/ErrorSymbol"
          << "lmLibErase $";
    expect(recorded_calls::inSlot(4, calls));
}

void RecordedProgramTest::everyClickStartsTheViewerWithOneArgument() {
    const QString started = folder->filePath("started");
    start();
    click("calibrateBtn");
    desktop.waitForWindow("Error");
    desktop.press({"Return"});

    installViewer(R"(printf '%s:%s\n' "$#" "$*" >> ')" + started + "'");
    const QString expected = "1:--caltab-calibration";
    desktop.waitForWindow(windowTitle);
    click("calibrateBtn");
    QTRY_COMPARE_WITH_TIMEOUT(linesOf(started), QStringList{expected}, 20000);
    click("calibrateBtn");
    QTRY_COMPARE_WITH_TIMEOUT(linesOf(started), (QStringList{expected, expected}), 20000);
}

void RecordedProgramTest::doesWithoutOpenGlButLeavesItToTheViewer() {
    const QString seen = folder->filePath("seen");
    installViewer("echo \"${QT_XCB_GL_INTEGRATION-own choice}\" > '" + seen + "'");
    start();
    click("calibrateBtn");
    QTRY_COMPARE_WITH_TIMEOUT(linesOf(seen), QStringList{"own choice"}, 20000);

    QFile file(QString("/proc/%1/maps").arg(program->processId()));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray loaded = file.readAll();
    QVERIFY(loaded.contains("libqxcb"));
    QVERIFY(!loaded.contains("libGLX_"));  // a driver
}

int main(int argc, char **argv) {
    const Desktop desktop;
    qputenv("DISPLAY", desktop.display().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QApplication application(argc, argv);
    RecordedProgramTest test(desktop);
    return QTest::qExec(&test, argc, argv);
}

#include "recorded_program_test.moc"
