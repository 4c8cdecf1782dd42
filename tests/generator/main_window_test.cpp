// The controller: what starts an update, what an update changes, and what stays unchanged if an update fails.
#include "generator/main_window.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QDoubleSpinBox>
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QMetaMethod>
#include <QTabWidget>
#include <QtTest>

#include "lmlib/lm_lib_exception.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"
#include "tests/value_printing.h"

using driven_window::find;
using scripted_lmlib64::CommandScript;

namespace {

QGraphicsPixmapItem *picture(const MainWindow &window) {
    const auto items = find<QGraphicsView>(window, "preview")->scene()->items();
    return items.size() == 1 ? qgraphicsitem_cast<QGraphicsPixmapItem *>(items.first()) : nullptr;
}

void setPictureOf(int width, int height, unsigned char value) {
    CommandScript script;
    script.image.emplace();
    script.image->width = width;
    script.image->height = height;
    script.image->bytes.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), value);
    scripted_lmlib64::setCommand("GenerateCalibrationPattern", {script});
}

// The larger of two ratios: the picture's width to the viewport's, and its height to the viewport's, without the margin
// of 2 pixels that the view keeps. If it is above 1, the picture does not fit.
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

TEST_F(MainWindowTest, opensOnTheOfficialPageWithAPicture) {
    const MainWindow window;
    EXPECT_EQ(find<QTabWidget>(window, "patternType")->currentIndex(), 0);
    ASSERT_NE(picture(window), nullptr);
    EXPECT_EQ(picture(window)->pixmap().size(), QSize(4, 4));
    // Building the form, filling the lists and connecting cause no further update.
    EXPECT_EQ(recorded_calls::count("lmLibMakeUniqueItem"), 2);
    EXPECT_EQ(recorded_calls::count("lmLibSetString /Execute/1/Command GetModelInfo"), 1);
    EXPECT_EQ(recorded_calls::count("lmLibSetString /Execute/2/Command GenerateCalibrationPattern"), 1);
    EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}");
    EXPECT_TRUE(find(window, "saveBtn")->isEnabled() && find(window, "calibrateBtn")->isEnabled());
}

TEST_F(MainWindowTest, slotsHaveTheirOrder) {
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QList<QByteArray> methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        EXPECT_EQ(meta.method(i).methodType(), QMetaMethod::Slot);
        methods << meta.method(i).methodSignature();
    }
    EXPECT_EQ(methods, (QList<QByteArray>{"update()", "savePatterns()", "openCalTabCalibration()"}));
}

TEST_F(MainWindowTest, everyInputUpdatesOnceAndNoDisplayDoes) {
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
            EXPECT_EQ(recorded_calls::count("lmLibSetInt /Execute"), row.updates) << name;  // "ImageSize"
            EXPECT_EQ(recorded_calls::count("lmLibMakeUniqueItem"), row.updates) << name;
        }
    }
}

TEST_F(MainWindowTest, encodingChoiceEnablesItsInputs) {
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
}

TEST_F(MainWindowTest, showsThePictureSmoothlyAndAnEmptyOneAsNone) {
    MainWindow window;
    setPictureOf(20, 10, 200);
    window.update();
    ASSERT_NE(picture(window), nullptr);
    EXPECT_EQ(picture(window)->pixmap().size(), QSize(20, 10));
    EXPECT_EQ(picture(window)->pixmap().toImage().pixel(7, 3), qRgb(200, 200, 200));
    EXPECT_EQ(picture(window)->transformationMode(), Qt::SmoothTransformation);
    EXPECT_EQ(find<QGraphicsView>(window, "preview")->sceneRect(), picture(window)->sceneBoundingRect());
    setPictureOf(0, 0, 0);
    window.update();
    ASSERT_NE(picture(window), nullptr);
    EXPECT_TRUE(picture(window)->pixmap().isNull());
}

TEST_F(MainWindowTest, failureKeepsThePictureAndIsReportedOnce) {
    const std::pair<const char *, const char *> failures[] = {
        {"lmLibMakeUniqueItem", "/Execute"},
        {"lmLibSetBool", "*/Parameters/Encoding"},
        {"lmLibSetInt", "*/Parameters/ImageSize"},
        {"lmLibSetDouble", "*/Parameters/Patterns/\\0/GridSpacing"},
        {"lmLibSetString", "*/Command"},
        {"lmLibWaitForType", "*/Command"},
        {"lmLibGetBinaryInfo", "*/Result/Patterns/\\0"},
        {"lmLibGetCount", "*/Result/Patterns/\\0"},
        {"lmLibGetBinary", "*/Result/Patterns/\\0"},
    };
    for (const auto &[function, path] : failures) {
        SCOPED_TRACE(function);
        scripted_lmlib64::loadDefaultScript();
        const MainWindow window;
        const qint64 picturedBefore = picture(window)->pixmap().cacheKey();
        setPictureOf(20, 10, 200);
        scripted_lmlib64::setResult(function, path, 7);
        const auto message = driven_window::closeNextMessageBox();
        find<QDoubleSpinBox>(window, "halconOuterSize")->setValue(200);
        EXPECT_TRUE(message->contains("InternalError")) << message->toStdString();
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        ASSERT_NE(picture(window), nullptr);
        EXPECT_EQ(picture(window)->pixmap().cacheKey(), picturedBefore);
        EXPECT_EQ(find<QDoubleSpinBox>(window, "halconGridSpacing")->value(), 25.0);
        EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}");
    }
}

TEST_F(MainWindowTest, failedCommandShowsItsReasonAndTheNextChangeTriesAgain) {
    MainWindow window;
    scripted_lmlib64::setCommand("GenerateCalibrationPattern",
                                 {CommandScript::failing("TooThick", "The plate is too thick.")});
    bool slotStoodWhileReported = false;
    QString message;
    driven_window::whenOpened<QMessageBox>([&](QMessageBox *box) {
        message = box->text();
        slotStoodWhileReported = scripted_lmlib64::hasNode("/Execute/3/Result/ErrorText");
        box->accept();
    });
    window.update();
    EXPECT_EQ(message,
              "An LmLib error occurred while executing the command:\nGenerateCalibrationPattern: \n"
              "TooThick: The plate is too thick.");
    EXPECT_TRUE(slotStoodWhileReported);
    EXPECT_EQ(scripted_lmlib64::nodeJson("/Execute"), "{}");
    EXPECT_EQ(picture(window)->pixmap().size(), QSize(4, 4));
    setPictureOf(20, 10, 200);
    window.update();
    EXPECT_EQ(picture(window)->pixmap().size(), QSize(20, 10));
}

TEST_F(MainWindowTest, firstUpdateMayFailButNotTheCatalogue) {
    scripted_lmlib64::setCommand("GenerateCalibrationPattern", {CommandScript::failing("NotNow", "Later.")});
    const auto message = driven_window::closeNextMessageBox();
    {
        MainWindow window;
        EXPECT_TRUE(message->endsWith("NotNow: Later."));
        EXPECT_TRUE(find<QGraphicsView>(window, "preview")->scene()->items().isEmpty());
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    scripted_lmlib64::setCommand("GetModelInfo", {CommandScript::failing("NoCatalogue", "There is none.")});
    EXPECT_THROW(MainWindow(), LmLibException);
    EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
}

TEST_F(MainWindowTest, emptyCatalogueWritesNoPattern) {
    scripted_lmlib64::loadScript(R"({"commands": {"GetModelInfo": {"result": {"CalTabs": []}}}})");
    const MainWindow window;
    EXPECT_EQ(recorded_calls::all().filter("/Execute/2"), recorded_calls::updateCalls(2, {}).mid(1));
}

TEST_F(MainWindowTest, refitsWhenShownAndResizedWithoutTheLibrary) {
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
