#include "app/program.h"

#include <QApplication>
#include <cstdint>

#include "app/log_message_handler.h"
#include "app/without_open_gl.h"
#include "camera_library/lmlib64.h"
#include "generator/main_window.h"
#include "lmlib/result_check.h"
#include "tooltips/tool_tip_helper.h"

namespace {

// Version 5.15.10 of Qt. QApplication always gets this number, whichever 5.15 version is installed.
constexpr int toolkitVersion = 0x050F0A;

void finalizeLibrary() {
    std::int32_t result = LmLibResultOperationSucceeded;
    lmLibFinalize(&result);
    checkResult("", result);
}

}  // namespace

int runProgram(int argc, char **argv) {
    // The handler is installed first, so that it also gets the toolkit's messages during start-up.
    installMessageHandler();

    QApplication application(argc, argv, toolkitVersion);
    MainWindow window;
    VistrelToolTipHelper toolTipHelper;
    application.installEventFilter(&toolTipHelper);

    QApplication::setActiveWindow(&window);
    QApplication::setWindowIcon(window.windowIcon());
    {
        const WithoutOpenGl withoutOpenGl;
        window.show();
    }
    const int exitCode = QApplication::exec();

    // The library is finalised here, while the window, the tool tip helper and the application still exist. They are
    // destroyed at the end of this function.
    finalizeLibrary();
    return exitCode;
}
