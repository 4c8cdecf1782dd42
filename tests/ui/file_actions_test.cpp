// Tests the two buttons: one saves patterns, and the other starts the viewer. The tests answer the file dialog as a
// user does, and a script replaces the viewer.
#include <gtest/gtest.h>

#include <QFile>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"
#include "tests/local_encoding.h"
#include "tests/shell_script.h"
#include "tests/value_printing.h"

using driven_window::find;

namespace {

using Look = std::function<void(const QFileDialog &)>;

// Clicks the button that saves, and passes the file dialog to `look`. Then types the name into the dialog and accepts
// it; an empty name cancels the dialog.
void save(
    const MainWindow &window, const QString &name, const Look &look = [](const QFileDialog &) {}) {
    driven_window::answerFileDialog(name, look);
    find<QPushButton>(window, "saveBtn")->click();
}

QString offeredFolder(const MainWindow &window) {
    QString folder;
    save(window, "", [&](const QFileDialog &dialog) { folder = dialog.directory().absolutePath(); });
    return folder;
}

class SavePatternsTest : public testing::Test {
protected:
    SavePatternsTest() { scripted_lmlib64::loadDefaultScript(); }

    const QTemporaryDir folder;
};

TEST_F(SavePatternsTest, asksForAFileAndDoesNothingWhenCancelled) {
    const MainWindow window;
    scripted_lmlib64::clearCalls();
    save(window, "", [&](const QFileDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Save pattern...");
        EXPECT_EQ(dialog.nameFilters(), (QStringList{"Portable Document Format(*.pdf)", "JSON Format (*.json)"}));
        EXPECT_EQ(dialog.selectedNameFilter(), dialog.nameFilters().first());
        EXPECT_FALSE(dialog.testOption(QFileDialog::DontConfirmOverwrite));
        EXPECT_EQ(dialog.parentWidget(), &window);
        EXPECT_EQ(dialog.directory(), QDir::current());
    });
    EXPECT_EQ(recorded_calls::all(), QStringList());
}

TEST_F(SavePatternsTest, appendsPdfToNamesWithoutADot) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("with.dot"));
    const LocalEncoding encoding;
    const std::pair<QString, std::string> rows[] = {{"target", "target.pdf"},
                                                    {"target.old", "target.old"},
                                                    {"target.", "target."},
                                                    {"with.dot/target", "with.dot/target.pdf"},
                                                    {encoding.euro(), std::string(encoding.euroByte) + ".pdf"}};
    const MainWindow window;
    for (const auto &[typed, written] : rows) {
        scripted_lmlib64::clearCalls();
        save(window, folder.filePath(typed));
        const std::string call = scripted_lmlib64::callLines().at(1);
        EXPECT_EQ(call.substr(call.find("Filename ")), "Filename " + folder.path().toStdString() + "/" + written);
    }
}

TEST_F(SavePatternsTest, writesEveryPatternOfAnAssemblyAndOneOfAnyOtherType) {
    const MainWindow window;
    find<QSpinBox>(window, "assemblyNumberOfPatterns")->setValue(3);
    const QString fileName = folder.filePath("target.json");
    const auto savePage = [&](int page) {
        find<QTabWidget>(window, "patternType")->setCurrentIndex(page);
        scripted_lmlib64::clearCalls();
        save(window, fileName);
    };
    savePage(3);
    QStringList expected{"lmLibMakeUniqueItem /Execute", "lmLibSetString $/Parameters/Filename " + fileName};
    for (int i = 0; i < 3; ++i) {
        const QString item = QString("$/Parameters/Patterns/\\%1/").arg(i);
        expected << "lmLibSetString " + item + "Type Assembly"
                 << "lmLibSetInt " + item + QString("AssemblyPattern %1").arg(i)
                 << "lmLibSetDouble " + item + "GridSpacing 12"
                 << "lmLibSetBool " + item + "Polarity true";
    }
    expected << recorded_calls::runCalls("GenerateCalibrationPattern") << "lmLibErase $";
    // Earlier commands of the window used the slots 1 to 4, so the first save uses slot 5. The page change in
    // savePage(1) uses slot 6, so the second save uses slot 7.
    EXPECT_EQ(recorded_calls::all(), recorded_calls::inSlot(5, expected));
    savePage(1);
    EXPECT_EQ(recorded_calls::all().filter("/Type "),
              recorded_calls::inSlot(7, {"lmLibSetString @/Type SingleCustom"}));
}

TEST_F(SavePatternsTest, dialogOpensInTheFolderChosenLastEvenIfNoFileWasWritten) {
    ASSERT_TRUE(QDir(folder.path()).mkdir("a") && QDir(folder.path()).mkdir("b"));
    const MainWindow window;
    save(window, folder.filePath("a/target"));
    EXPECT_EQ(offeredFolder(window), folder.filePath("a"));
    scripted_lmlib64::failCommand("GenerateCalibrationPattern", "NotWritten", "There is no room.");
    // The error report opens while click() is still running, so the code that closes it is set up before the click.
    const auto message = driven_window::closeNextMessageBox();
    save(window, folder.filePath("b/target"));
    EXPECT_TRUE(message->endsWith("NotWritten: There is no room.")) << message->toStdString();
    EXPECT_EQ(offeredFolder(window), folder.filePath("b"));
}

const char *const viewerNode = "/Path/Application/LmView";

#if defined(Q_OS_UNIX)
TEST(OpenCalTabCalibration, everyClickStartsAViewerThatOutlivesTheWindow) {
    scripted_lmlib64::loadDefaultScript();
    const QTemporaryDir folder;
    const QString record = folder.filePath("viewer.record");
    const QString viewer = folder.filePath("viewer");
    // The script waits until the test tells it to end. The test does so only after the window is gone. The script gives
    // up after ten seconds.
    installScript(viewer, R"(
        echo "$#:$*" >>"$0.record"
        for i in $(seq 100); do [ -e "$0.end" ] && break; sleep 0.1; done
        [ -e "$0.end" ] && echo ended >>"$0.record")");
    scripted_lmlib64::setNode(viewerNode, '"' + viewer.toStdString() + '"');
    QStringList expected;
    {
        const MainWindow window;
        scripted_lmlib64::clearCalls();
        for (int clicks = 0; clicks < 2; ++clicks) {
            find<QPushButton>(window, "calibrateBtn")->click();
            expected << "1:--caltab-calibration";
            EXPECT_TRUE(QTest::qWaitFor([&] { return linesOf(record) == expected; })) << clicks;
        }
        EXPECT_EQ(recorded_calls::all().first(), "lmLibGetString /Path/Application/LmView [no result]");
    }
    installScript(viewer + ".end", "");
    expected << "ended"
             << "ended";
    EXPECT_TRUE(QTest::qWaitFor([&] { return linesOf(record) == expected; }));
}
#endif

TEST(OpenCalTabCalibration, saysWhyThereIsNoViewer) {
    const LocalEncoding encoding;
    const QTemporaryDir folder;
    const QString data = folder.filePath("data");
    QFile(data).open(QIODevice::WriteOnly);
    const struct {
        std::string path;
        QString message;
    } rows[] = {{data.toStdString(), data + " is not executable"},
                {"/50%1", "/50%1 does not exist"},
                {std::string("/") + encoding.euroByte, '/' + encoding.euro() + " does not exist"},
                {"", " does not exist"}};
    for (const auto &row : rows) {
        scripted_lmlib64::loadDefaultScript();
        lmLibSetString(nullptr, viewerNode, row.path.c_str());
        if (row.path.empty()) {
            lmLibErase(nullptr, viewerNode);
        }
        const MainWindow window;
        QString text;
        driven_window::whenOpened<QMessageBox>([&](QMessageBox *box) {
            text = box->text();
            EXPECT_EQ(box->windowTitle(), "Error");
            EXPECT_EQ(box->icon(), QMessageBox::Warning);
            EXPECT_EQ(box->standardButtons(), QMessageBox::Ok);
            EXPECT_EQ(box->parent(), nullptr);
            box->accept();
        });
        find<QPushButton>(window, "calibrateBtn")->click();
        EXPECT_EQ(text, row.message);
    }
}

}  // namespace
