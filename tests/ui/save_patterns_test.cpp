// Saving, from the click on the button to the command, with the dialog answered as a user would.
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"

using driven_window::find;

namespace {

struct SeenDialog {
    QString title;
    QString directory;
    QStringList filters;
    QWidget *parent = nullptr;
};

// Clicks the button, types the name into the dialog and accepts it; an empty name cancels it.
SeenDialog save(const MainWindow &window, const QString &name) {
    SeenDialog seen;
    driven_window::answerFileDialog(name, [&seen](const QFileDialog &dialog) {
        seen = {dialog.windowTitle(), dialog.directory().absolutePath(), dialog.nameFilters(), dialog.parentWidget()};
    });
    find<QPushButton>(window, "saveBtn")->click();
    return seen;
}

QStringList saveCalls(int slot, const QString &fileName, const QStringList &patternWrites) {
    return recorded_calls::inSlot(
        slot,
        QStringList{"lmLibMakeUniqueItem /Execute", "lmLibSetString $/Parameters/Filename " + fileName} +
            patternWrites +
            QStringList{"lmLibSetString $/Command GenerateCalibrationPattern", "lmLibGetType $/Command",
                        "lmLibWaitForType $/Command 1 true", "lmLibGetType $/Result/ErrorSymbol", "lmLibErase $"});
}

}  // namespace

class SavePatternsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void asksForAFile();
    void cancellingDoesNothing();
    void keepsNamesWithADot_data();
    void keepsNamesWithADot();
    void writesTheCurrentPattern();
    void writesEveryPatternOfAnAssembly();
    void dialogOpensWhereTheLastFileWent();
    void failureIsReportedAndTheFolderKept_data();
    void failureIsReportedAndTheFolderKept();

private:
    std::unique_ptr<QTemporaryDir> folder;
};

void SavePatternsTest::init() {
    scripted_lmlib64::loadDefaultScript();
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
}

void SavePatternsTest::asksForAFile() {
    const MainWindow window;
    const SeenDialog seen = save(window, "");
    QCOMPARE(seen.title, QString("Save pattern..."));
    QCOMPARE(seen.filters, QStringList({"Portable Document Format(*.pdf)", "JSON Format (*.json)"}));
    QCOMPARE(seen.parent, static_cast<const QWidget *>(&window));
    QCOMPARE(seen.directory, QDir::currentPath());
}

void SavePatternsTest::cancellingDoesNothing() {
    const MainWindow window;
    scripted_lmlib64::clearCalls();
    save(window, "");
    QCOMPARE(recorded_calls::all(), QStringList());
}

void SavePatternsTest::keepsNamesWithADot_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("written");
    QTest::newRow("no dot") << "target"
                            << "target.pdf";
    QTest::newRow("json") << "target.json"
                          << "target.json";
    QTest::newRow("other ending") << "target.old"
                                  << "target.old";
    QTest::newRow("dot at the end") << "target."
                                    << "target.";
    QTest::newRow("dot in the folder only") << "with.dot/target"
                                            << "with.dot/target.pdf";
    QTest::newRow("not ASCII") << QStringLiteral("Gr\u00f6\u00dfe") << QStringLiteral("Gr\u00f6\u00dfe.pdf");
}

void SavePatternsTest::keepsNamesWithADot() {
    QFETCH(QString, typed);
    QFETCH(QString, written);
    QVERIFY(QDir(folder->path()).mkdir("with.dot"));
    const MainWindow window;
    save(window, folder->filePath(typed));
    std::string fileName;
    for (const auto &call : scripted_lmlib64::calls()) {
        if (call.path == "/Execute/3/Parameters/Filename") {
            fileName = call.value;
        }
    }
    QCOMPARE(fileName, folder->filePath(written).toLocal8Bit().toStdString());
}

void SavePatternsTest::writesTheCurrentPattern() {
    const MainWindow window;
    // Not an assembly, so that its number of patterns does not count.
    find<QTabWidget>(window, "patternType")->setCurrentIndex(1);
    scripted_lmlib64::clearCalls();
    save(window, folder->filePath("one.json"));
    QCOMPARE(recorded_calls::all(), saveCalls(4, folder->filePath("one.json"),
                                              {"lmLibSetString @/Type SingleCustom", "lmLibSetDouble @/GridSpacing 12",
                                               "lmLibSetDouble @/Thickness 0", "lmLibSetBool @/Polarity true"}));
}

void SavePatternsTest::writesEveryPatternOfAnAssembly() {
    const MainWindow window;
    find<QTabWidget>(window, "patternType")->setCurrentIndex(3);
    find<QSpinBox>(window, "assemblyNumberOfPatterns")->setValue(3);
    QStringList writes;
    for (int i = 0; i < 3; ++i) {
        const QString item = QString("$/Parameters/Patterns/\\%1/").arg(i);
        writes << "lmLibSetString " + item + "Type Assembly"
               << "lmLibSetInt " + item + QString("AssemblyPattern %1").arg(i)
               << "lmLibSetDouble " + item + "GridSpacing 12"
               << "lmLibSetBool " + item + "Polarity true";
    }
    scripted_lmlib64::clearCalls();
    save(window, folder->filePath("all.pdf"));
    QCOMPARE(recorded_calls::all(), saveCalls(5, folder->filePath("all.pdf"), writes));
}

void SavePatternsTest::dialogOpensWhereTheLastFileWent() {
    QVERIFY(QDir(folder->path()).mkdir("a") && QDir(folder->path()).mkdir("b"));
    const MainWindow window;
    save(window, folder->filePath("a/target"));
    QCOMPARE(save(window, "").directory, folder->filePath("a"));
    QCOMPARE(save(window, folder->filePath("b/target")).directory, folder->filePath("a"));
    QCOMPARE(save(window, "").directory, folder->filePath("b"));
}

void SavePatternsTest::failureIsReportedAndTheFolderKept_data() {
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("slot") << QByteArray("lmLibMakeUniqueItem") << QByteArray("/Execute");
    QTest::newRow("file name") << QByteArray("lmLibSetString") << QByteArray("*/Filename");
    QTest::newRow("pattern") << QByteArray("lmLibSetDouble") << QByteArray("*/GridSpacing");
    QTest::newRow("start") << QByteArray("lmLibSetString") << QByteArray("*/Command");
    QTest::newRow("command") << QByteArray() << QByteArray();
}

void SavePatternsTest::failureIsReportedAndTheFolderKept() {
    QFETCH(QByteArray, function);
    QFETCH(QByteArray, path);
    const MainWindow window;
    QString expected = "InternalError";
    if (function.isEmpty()) {
        expected = "NotWritten: There is no room.";
        scripted_lmlib64::setCommand("GenerateCalibrationPattern",
                                     {scripted_lmlib64::CommandScript::failing("NotWritten", "There is no room.")});
    } else {
        scripted_lmlib64::setResult(function.toStdString(), path.toStdString(), 7);
    }
    QString message;
    // The report opens while the click is still being handled, after the file dialog has closed.
    driven_window::whenOpened<QMessageBox>([&](QMessageBox *box) {
        message = box->text();
        box->accept();
    });
    save(window, folder->filePath("target"));
    QVERIFY2(message.endsWith(expected), qPrintable(message));
    QCOMPARE(scripted_lmlib64::nodeJson("/Execute"), std::string("{}"));
    QCOMPARE(save(window, "").directory, folder->path());
}

QTEST_MAIN(SavePatternsTest)
#include "save_patterns_test.moc"
