// Tests the main window: what starts an update, what an update changes, and what stays unchanged if an update fails.
#include "generator/main_window.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QDoubleSpinBox>
#include <QGraphicsView>
#include <QTabWidget>
#include <QtTest>

#include "lmlib/lm_lib_exception.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"
#include "tests/value_printing.h"

using driven_window::find;
using driven_window::picture;

namespace {

void setPictureOf(int width, int height, unsigned char value) {
    const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    scripted_lmlib64::setImage({width, height, 1, std::vector<std::uint8_t>(size, value)});
}

// Returns the larger of two ratios: the picture's width to the viewport's width, and the picture's height to the
// viewport's height. The view's margin of 2 pixels does not count. If the result is above 1, the picture does not fit.
double filling(const MainWindow &window) {
    const auto *view = find<QGraphicsView>(window, "preview");
    const QRectF shown = view->transform().mapRect(view->sceneRect());
    const QSizeF room = view->viewport()->size() - QSize(4, 4);
    return std::max(shown.width() / room.width(), shown.height() / room.height());
}

class MainWindowTest : public testing::Test {
protected:
    MainWindowTest() { scripted_lmlib64::loadDefaultScript(); }
};

TEST_F(MainWindowTest, opensOnTheOfficialPageWithThePictureUpright) {
    const MainWindow window;
    EXPECT_EQ(find<QTabWidget>(window, "patternType")->currentIndex(), 0);
    ASSERT_NE(picture(window), nullptr);
    const QImage shown = picture(window)->pixmap().toImage();
    EXPECT_EQ(shown.size(), QSize(4, 4));
    // The library's picture is black at the top left and grows brighter along each row.
    EXPECT_EQ(shown.pixel(0, 0), qRgb(0, 0, 0));
    EXPECT_EQ(shown.pixel(3, 0), qRgb(48, 48, 48));
    EXPECT_EQ(shown.pixel(0, 3), qRgb(192, 192, 192));
    EXPECT_EQ(picture(window)->transformationMode(), Qt::SmoothTransformation);
    EXPECT_EQ(find<QGraphicsView>(window, "preview")->sceneRect(), picture(window)->sceneBoundingRect());
    // Each command of the library runs in its own slot of the tree. One of these slots was made for reading the
    // catalogue, and one for the only update. Building the form, filling the lists and connecting the signals cause no
    // update.
    EXPECT_EQ(recorded_calls::count("lmLibMakeUniqueItem"), 2);
    EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}");
    const QMetaObject &meta = MainWindow::staticMetaObject;
    int slot = meta.methodOffset();
    for (const char *signature : {"update()", "savePatterns()", "openCalTabCalibration()"}) {
        EXPECT_EQ(meta.indexOfSlot(signature), slot++);
    }
}

TEST_F(MainWindowTest, updatesOnceForEachSignalOfAnInputAndNeverForADerivedValue) {
    const struct {
        int updates;
        double value;
        std::vector<const char *> names;
    } rows[] = {{1, 4, {"patternType"}},
                {1, 1, {"officialPattern", "singleGridSpacing", "singleThickness", "assemblyGridSpacing"}},
                {1, 0, {"singlePolarity", "flexiblePolarity", "assemblyPolarity"}},
                {1,
                 9,
                 {"flexibleWidth", "flexibleHeight", "flexibleOffsetXSpacings", "flexibleOffsetYSpacings",
                  "assemblyNumberOfPatterns", "halconOffsetXSpacings", "halconOffsetYSpacings"}},
                {1, 42, {"flexibleGridSpacing", "halconThickness", "halconOuterSize"}},
                // One button is switched on and another one off, and each sends a signal.
                {2, 1, {"halconEncodeNothing", "halconEncodeOffset"}},
                {0, 1, {"halconEncodeSpacing"}},
                {0,
                 77,
                 {"halconGridSpacing", "halconOffsetXMM", "halconOffsetYMM", "flexibleOuterWidth",
                  "flexibleOuterHeight", "flexibleOffsetXMM", "flexibleOffsetYMM"}}};
    for (const auto &row : rows) {
        for (const char *name : row.names) {
            const MainWindow window;
            scripted_lmlib64::clearCalls();
            driven_window::setInput(window, name, row.value);
            // No pattern that this test draws has an integer parameter. So the only integer that an update writes is
            // "ImageSize".
            EXPECT_EQ(recorded_calls::count("lmLibSetInt /Execute"), row.updates) << name;
            EXPECT_EQ(recorded_calls::count("lmLibMakeUniqueItem"), row.updates) << name;
        }
    }
}

TEST_F(MainWindowTest, onlyTheEncodingChoiceEnablesAndDisablesInputs) {
    const MainWindow window;
    const auto expectEnabled = [&window](bool thickness) {
        EXPECT_EQ(find(window, "halconThickness")->isEnabled(), thickness);
        EXPECT_EQ(find(window, "halconOffsetXSpacings")->isEnabled(), !thickness);
        EXPECT_EQ(find(window, "halconOffsetYSpacings")->isEnabled(), !thickness);
    };
    expectEnabled(true);
    for (const char *name : {"halconEncodeOffset", "halconEncodeSpacing", "halconEncodeNothing"}) {
        find<QAbstractButton>(window, name)->click();
        expectEnabled(name == std::string("halconEncodeSpacing"));
    }
    for (int page = 0; page < 5; ++page) {
        driven_window::setInput(window, "patternType", page);
        EXPECT_TRUE(find(window, "saveBtn")->isEnabled() && find(window, "calibrateBtn")->isEnabled()) << page;
    }
}

TEST_F(MainWindowTest, showsNothingIfThePictureHasNoBytes) {
    setPictureOf(0, 0, 0);
    const MainWindow window;
    ASSERT_NE(picture(window), nullptr);
    EXPECT_TRUE(picture(window)->pixmap().isNull());
}

TEST_F(MainWindowTest, reportsAFailureAndKeepsThePictureUntilAnUpdateSucceeds) {
    MainWindow window;
    const qint64 pictureBefore = picture(window)->pixmap().cacheKey();
    setPictureOf(20, 10, 200);
    const auto expectReportOf = [&](const std::function<void()> &change, const char *report, bool keepsSlot) {
        bool slotExists = false;
        QString message;
        driven_window::whenOpened<QMessageBox>([&](QMessageBox *box) {
            message = box->text();
            slotExists = scripted_lmlib64::nodeJson("/Execute") != "{}";
            box->accept();
        });
        change();
        EXPECT_EQ(message, report);
        EXPECT_EQ(slotExists, keepsSlot) << "while the report is open";
        EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}");
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        ASSERT_NE(picture(window), nullptr);
        EXPECT_EQ(picture(window)->pixmap().cacheKey(), pictureBefore);
    };
    scripted_lmlib64::failCommand("GenerateCalibrationPattern", "TooThick", "The plate is too thick.");
    expectReportOf([&] { driven_window::setInput(window, "halconOuterSize", 200); },
                   "An LmLib error occurred while executing the command:\nGenerateCalibrationPattern: \n"
                   "TooThick: The plate is too thick.",
                   true);
    EXPECT_EQ(find<QDoubleSpinBox>(window, "halconGridSpacing")->value(), 25.0);

    scripted_lmlib64::setCommandResult("GenerateCalibrationPattern", "{}");
    scripted_lmlib64::setResult("lmLibGetBinary", "*", 7, 1);
    find(window, "halconThickness")->setEnabled(false);
    expectReportOf(
        [&] { window.update(); },
        "An LmLib error occurred when accessing the item:\n/Execute/4/Result/Patterns/\\0: \n\tInternalError", false);
    EXPECT_TRUE(find(window, "halconThickness")->isEnabled());

    window.update();
    EXPECT_EQ(picture(window)->pixmap().size(), QSize(20, 10));
}

TEST_F(MainWindowTest, opensIfTheFirstUpdateFailsButNotWithoutTheCatalogue) {
    scripted_lmlib64::failCommand("GenerateCalibrationPattern", "NotNow", "Later.");
    const auto message = driven_window::closeNextMessageBox();
    {
        MainWindow window;
        EXPECT_TRUE(message->endsWith("NotNow: Later."));
        EXPECT_TRUE(find<QGraphicsView>(window, "preview")->scene()->items().isEmpty());
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    scripted_lmlib64::failCommand("GetModelInfo", "NoCatalogue", "There is none.");
    EXPECT_THROW(MainWindow(), LmLibException);
    EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
}

TEST_F(MainWindowTest, writesNoPatternIfTheCatalogueIsEmpty) {
    scripted_lmlib64::setCommandResult("GetModelInfo", R"({"CalTabs": []})");
    const MainWindow window;
    EXPECT_EQ(recorded_calls::all().filter("/Execute/2"), recorded_calls::updateCalls(2, {}).mid(1));
}

TEST_F(MainWindowTest, refitsThePictureWithoutCallingTheLibrary) {
    setPictureOf(2000, 1000, 128);
    MainWindow window;
    scripted_lmlib64::clearCalls();
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_NEAR(filling(window), 1.0, 0.01);
    for (const QSize size : {QSize(1400, 900), QSize(899, 553)}) {
        window.resize(size);
        QCoreApplication::processEvents();
        EXPECT_NEAR(filling(window), 1.0, 0.01);
    }
    find<QGraphicsView>(window, "preview")->resetTransform();
    window.hide();
    window.show();
    EXPECT_NEAR(filling(window), 1.0, 0.01);
    EXPECT_EQ(recorded_calls::all(), QStringList());
}

}  // namespace
