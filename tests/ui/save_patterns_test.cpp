// Saving, from the click on the button to the command, with the dialog answered as a user would.
#include <gtest/gtest.h>

#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"
#include "tests/value_printing.h"

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
        slot, QStringList{"lmLibMakeUniqueItem /Execute", "lmLibSetString $/Parameters/Filename " + fileName} +
                  patternWrites + recorded_calls::runCalls("GenerateCalibrationPattern") + QStringList{"lmLibErase $"});
}

class SavePatternsTest : public testing::Test {
protected:
    SavePatternsTest() { scripted_lmlib64::loadDefaultScript(); }

    const QTemporaryDir folder;
};

TEST_F(SavePatternsTest, asksForAFileAndDoesNothingWhenCancelled) {
    const MainWindow window;
    scripted_lmlib64::clearCalls();
    const SeenDialog seen = save(window, "");
    EXPECT_EQ(seen.title, "Save pattern...");
    EXPECT_EQ(seen.filters, (QStringList{"Portable Document Format(*.pdf)", "JSON Format (*.json)"}));
    EXPECT_EQ(seen.parent, &window);
    EXPECT_EQ(seen.directory, QDir::currentPath());
    EXPECT_EQ(recorded_calls::all(), QStringList());
}

TEST_F(SavePatternsTest, keepsNamesWithADotAndEndsOthersInPdf) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("with.dot"));
    const QString notAscii = QStringLiteral("Gr\u00f6\u00dfe");
    const std::pair<QString, QString> rows[] = {{"target", "target.pdf"},
                                                {"target.json", "target.json"},
                                                {"target.old", "target.old"},
                                                {"target.", "target."},
                                                {"with.dot/target", "with.dot/target.pdf"},
                                                {notAscii, notAscii + ".pdf"}};
    const MainWindow window;
    for (const auto &[typed, written] : rows) {
        scripted_lmlib64::clearCalls();
        save(window, folder.filePath(typed));
        std::string fileName;
        for (const auto &call : scripted_lmlib64::calls()) {
            if (QString::fromStdString(call.path).endsWith("/Parameters/Filename")) {
                fileName = call.value;
            }
        }
        EXPECT_EQ(fileName, folder.filePath(written).toLocal8Bit().toStdString());
    }
}

TEST_F(SavePatternsTest, writesTheCurrentPatternAndEveryOneOfAnAssembly) {
    const MainWindow window;
    find<QSpinBox>(window, "assemblyNumberOfPatterns")->setValue(3);
    // The current page is not Assembly, so the number of patterns there is ignored.
    find<QTabWidget>(window, "patternType")->setCurrentIndex(1);
    scripted_lmlib64::clearCalls();
    save(window, folder.filePath("one.json"));
    EXPECT_EQ(recorded_calls::all(), saveCalls(5, folder.filePath("one.json"),
                                               {"lmLibSetString @/Type SingleCustom", "lmLibSetDouble @/GridSpacing 12",
                                                "lmLibSetDouble @/Thickness 0", "lmLibSetBool @/Polarity true"}));

    find<QTabWidget>(window, "patternType")->setCurrentIndex(3);
    QStringList writes;
    for (int i = 0; i < 3; ++i) {
        const QString item = QString("$/Parameters/Patterns/\\%1/").arg(i);
        writes << "lmLibSetString " + item + "Type Assembly"
               << "lmLibSetInt " + item + QString("AssemblyPattern %1").arg(i)
               << "lmLibSetDouble " + item + "GridSpacing 12"
               << "lmLibSetBool " + item + "Polarity true";
    }
    scripted_lmlib64::clearCalls();
    save(window, folder.filePath("all.pdf"));
    EXPECT_EQ(recorded_calls::all(), saveCalls(7, folder.filePath("all.pdf"), writes));
}

TEST_F(SavePatternsTest, dialogOpensWhereTheLastFileWent) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("a") && QDir(folder.path()).mkdir("b"));
    const MainWindow window;
    save(window, folder.filePath("a/target"));
    EXPECT_EQ(save(window, "").directory, folder.filePath("a"));
    EXPECT_EQ(save(window, folder.filePath("b/target")).directory, folder.filePath("a"));
    EXPECT_EQ(save(window, "").directory, folder.filePath("b"));
}

TEST_F(SavePatternsTest, reportsAFailureAndKeepsTheFolder) {
    const std::pair<const char *, const char *> rows[] = {{"lmLibMakeUniqueItem", "/Execute"},
                                                          {"lmLibSetString", "*/Filename"},
                                                          {"lmLibSetDouble", "*/GridSpacing"},
                                                          {"lmLibSetString", "*/Command"},
                                                          {"", "the command itself"}};
    for (const auto &[function, path] : rows) {
        SCOPED_TRACE(std::string(function) + path);
        scripted_lmlib64::loadDefaultScript();
        const MainWindow window;
        QString expected = "InternalError";
        if (*function == '\0') {
            expected = "NotWritten: There is no room.";
            scripted_lmlib64::setCommand("GenerateCalibrationPattern",
                                         {scripted_lmlib64::CommandScript::failing("NotWritten", "There is no room.")});
        } else {
            scripted_lmlib64::setResult(function, path, 7);
        }
        // The report opens while the click is still being handled, after the file dialog has closed.
        const auto message = driven_window::closeNextMessageBox();
        save(window, folder.filePath("target"));
        EXPECT_TRUE(message->endsWith(expected)) << message->toStdString();
        EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}");
        EXPECT_EQ(save(window, "").directory, folder.path());
    }
}

}  // namespace
