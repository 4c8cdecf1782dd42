#include "app/windows_start.h"

#include <windows.h>

#include <QGuiApplication>
#include <cstdlib>
#include <exception>

#include "lmlib/error_report.h"
#include "lmlib/lm_lib_exception.h"

namespace {

// Shows the text of the exception that is about to end the process; an exception of an unknown type has none.
// Afterwards, ends the process with std::abort, as the default handler does.
[[noreturn]] void showFailure() {
    std::set_terminate(std::abort);  // an exception that escapes from this function must not call it again
    if (const std::exception_ptr failure = std::current_exception()) {
        try {
            std::rethrow_exception(failure);
        } catch (const LmLibException &exception) {
            showErrorReport(exception);
        } catch (const std::exception &exception) {
            MessageBoxA(nullptr, exception.what(), "Error", MB_OK | MB_ICONERROR);
        }
    }
    std::abort();
}

}  // namespace

void prepareProgram() {
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // A scale of 150 % is used as 1.5 and is not rounded to 2.
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    std::set_terminate(showFailure);
}
