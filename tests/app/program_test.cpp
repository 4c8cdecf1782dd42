#include "app/program.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QDebug>
#include <QHelpEvent>
#include <QIcon>
#include <QTimer>
#include <QWidget>
#include <array>
#include <functional>
#include <string>

#include "generator/main_window.h"
#include "lmlib/lm_lib_exception.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace {

// Runs inside the application object's constructor.
std::function<void()> whileApplicationStarts;

void runStartupHook() {
    if (whileApplicationStarts) {
        whileApplicationStarts();
    }
}
Q_COREAPP_STARTUP_FUNCTION(runStartupHook)

// Records whether it gets tool-tip events, which it does only if no event filter of the application consumes them.
class Sensor : public QWidget {
public:
    bool sawToolTip = false;

protected:
    bool event(QEvent *event) override {
        sawToolTip = sawToolTip || event->type() == QEvent::ToolTip;
        return QWidget::event(event);
    }
};

bool toolTipsAreTakenAway() {
    Sensor sensor;
    QHelpEvent event(QEvent::ToolTip, QPoint(), QPoint());
    QCoreApplication::sendEvent(&sensor, &event);
    return !sensor.sawToolTip;
}

MainWindow *mainWindow() {
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *window = dynamic_cast<MainWindow *>(widget)) {
            return window;
        }
    }
    return nullptr;
}

int run() {
    std::string name = "LmCalTab";
    std::array<char *, 2> arguments = {name.data(), nullptr};
    return runProgram(1, arguments.data());
}

std::size_t finalizeCount() {
    std::size_t count = 0;
    for (const scripted_lmlib64::Call &call : scripted_lmlib64::calls()) {
        count += call.function == "lmLibFinalize" ? 1U : 0U;
    }
    return count;
}

class ProgramTest : public testing::Test {
protected:
    void SetUp() override {
        scripted_lmlib64::loadDefaultScript();
        quitInTheLoop([] {}, 0);
    }

    void TearDown() override { qInstallMessageHandler(nullptr); }

    // Runs the action as the first thing in the event loop, and ends the loop with the code.
    static void quitInTheLoop(const std::function<void()> &action, int exitCode) {
        whileApplicationStarts = [=] {
            QTimer::singleShot(0, qApp, [=] {
                action();
                QCoreApplication::exit(exitCode);
            });
        };
    }
};

TEST_F(ProgramTest, showsTheWindowAndReturnsTheLoopsResult) {
    bool looked = false;
    quitInTheLoop(
        [&] {
            const MainWindow *window = mainWindow();
            ASSERT_NE(window, nullptr);
            EXPECT_TRUE(window->isVisible());
            EXPECT_FALSE(window->isMaximized());
            EXPECT_EQ(QApplication::activeWindow(), window);
            EXPECT_FALSE(QApplication::windowIcon().isNull());
            EXPECT_EQ(QApplication::windowIcon().cacheKey(), window->windowIcon().cacheKey());
            EXPECT_TRUE(toolTipsAreTakenAway());
            looked = true;
        },
        5);
    EXPECT_EQ(run(), 5);
    EXPECT_TRUE(looked);
}

TEST_F(ProgramTest, finalizesTheLibraryLastWhileEverythingStillExists) {
    bool everythingExists = false;
    scripted_lmlib64::observeCalls([&](const scripted_lmlib64::Call &call) {
        if (call.function == "lmLibFinalize") {
            everythingExists = qApp != nullptr && mainWindow() != nullptr && toolTipsAreTakenAway();
        }
    });
    EXPECT_EQ(run(), 0);
    EXPECT_TRUE(everythingExists);
    EXPECT_EQ(finalizeCount(), 1U);
    EXPECT_EQ(scripted_lmlib64::callLines().back(), "lmLibFinalize");
    EXPECT_EQ(qApp, nullptr);
}

TEST_F(ProgramTest, buildsTheWindowBeforeTheToolTips) {
    run();
    std::string lastSlot;
    std::size_t manualReads = 0;
    for (const std::string &line : scripted_lmlib64::callLines()) {
        if (line == "lmLibGetString /Path/Manual [no result]") {
            ++manualReads;
            EXPECT_EQ(lastSlot, "lmLibErase /Execute/2") << "the first preview is drawn before";
        }
        lastSlot = line;
    }
    EXPECT_EQ(manualReads, 1U);
}

TEST_F(ProgramTest, letsAFailureToFinalizePass) {
    scripted_lmlib64::setResult("lmLibFinalize", "", LmLibResultTimeout);
    try {
        run();
        FAIL();
    } catch (const LmLibException &exception) {
        EXPECT_EQ(exception.itemPath, "");
        EXPECT_EQ(exception.errorCode, LmLibResultTimeout);
    }
    EXPECT_EQ(finalizeCount(), 1U);
}

TEST_F(ProgramTest, letsAFailureToBuildTheWindowPass) {
    scripted_lmlib64::setCommand("GetModelInfo", {scripted_lmlib64::CommandScript::failing("No", "No plates.")});
    EXPECT_THROW(run(), LmLibException);
    EXPECT_EQ(finalizeCount(), 0U);
}

TEST_F(ProgramTest, handlesMessagesFromTheStart) {
    whileApplicationStarts = [] {
        qDebug("left out");
        QMessageLogger(nullptr, 0, nullptr).warning("early");
        QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); });
    };
    testing::internal::CaptureStderr();
    run();
    const std::string written = testing::internal::GetCapturedStderr();
    EXPECT_NE(written.find("Warning: early (:0, )\n\n"), std::string::npos) << written;
    EXPECT_EQ(written.find("left out"), std::string::npos);
}

}  // namespace
