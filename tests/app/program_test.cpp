#include "app/program.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QHelpEvent>
#include <QIcon>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "generator/main_window.h"
#include "tests/scripted_lmlib64/scripted_lmlib64.h"

namespace {

// This function is called in the application object's constructor.
std::function<void()> whileApplicationStarts;

void runStartupHook() {
    if (whileApplicationStarts) {
        whileApplicationStarts();
    }
}
Q_COREAPP_STARTUP_FUNCTION(runStartupHook)

// True if an event filter of the application consumes tool tip events. Without such a filter, a widget that has no tip
// refuses them.
bool toolTipsAreTakenAway() {
    QWidget widget;
    QHelpEvent event(QEvent::ToolTip, QPoint(), QPoint());
    QCoreApplication::sendEvent(&widget, &event);
    return event.isAccepted();
}

MainWindow *mainWindow() {
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *window = dynamic_cast<MainWindow *>(widget)) {
            return window;
        }
    }
    return nullptr;
}

void lookAtTheRunningProgram() {
    const MainWindow *window = mainWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(window->isMaximized());
    EXPECT_EQ(QApplication::activeWindow(), window);
    EXPECT_FALSE(QApplication::windowIcon().isNull());
    EXPECT_EQ(QApplication::windowIcon().cacheKey(), window->windowIcon().cacheKey());
    EXPECT_TRUE(toolTipsAreTakenAway());
}

TEST(Program, startsInOrderAndReturnsTheResultOfTheEventLoop) {
    scripted_lmlib64::loadDefaultScript();
    whileApplicationStarts = [] {
        qDebug("left out");
        QMessageLogger(nullptr, 0, nullptr).warning("early");
        QTimer::singleShot(0, qApp, [] {
            lookAtTheRunningProgram();
            QCoreApplication::exit(5);
        });
    };
    bool everythingExists = false;
    scripted_lmlib64::observeCalls([&](const scripted_lmlib64::Call &call) {
        if (call.function == "lmLibFinalize") {
            everythingExists = qApp != nullptr && mainWindow() != nullptr && toolTipsAreTakenAway();
        }
    });
    testing::internal::CaptureStderr();
    std::string name = "LmCalTab";
    std::array<char *, 2> arguments = {name.data(), nullptr};
    EXPECT_EQ(runProgram(1, arguments.data()), 5);
    const std::string written = testing::internal::GetCapturedStderr();
    EXPECT_NE(written.find("Warning: early (:0, )\n\n"), std::string::npos) << written;
    EXPECT_EQ(written.find("left out"), std::string::npos);

    // Only the last three calls are compared. The first of them erases the slot of the command that has drawn the
    // pattern. With the second, the tool tip helper asks where the manual is; no other call asks for the manual. The
    // third finalises the library.
    const std::string askForManual = "lmLibGetString /Path/Manual [no result]";
    const std::vector<std::string> calls = scripted_lmlib64::callLines();
    ASSERT_GE(calls.size(), 3U);
    EXPECT_EQ(std::vector<std::string>(calls.end() - 3, calls.end()),
              (std::vector<std::string>{"lmLibErase /Execute/2", askForManual, "lmLibFinalize"}));
    EXPECT_EQ(std::count(calls.begin(), calls.end(), askForManual), 1);
    EXPECT_TRUE(everythingExists);
    EXPECT_EQ(qApp, nullptr);
    qInstallMessageHandler(nullptr);
}

}  // namespace
