#include "lmlib/error_report.h"

#include <QApplication>
#include <QThread>
#include <sstream>
#include <string>

#include "camera_library/lmlib64.h"
#include "lmlib/lm_lib_exception.h"
#include "lmlib/message_box.h"
#include "lmlib/tree_item.h"

namespace {

constexpr int detailPrecisionDigits = 18;

std::string detailText(const LmLibException &exception) {
    if (exception.itemPath.empty()) {
        // The library as a whole failed. The value at the empty path is the whole tree, which would not explain that.
        return "Unavailable";
    }
    try {
        return "Current node value:\n" + TreeItem(exception.itemPath).asJson(true, detailPrecisionDigits, false);
    } catch (...) {
        return "Unavailable";
    }
}

void writeCommandFailure(std::ostream &text, const LmLibException &exception) {
    text << "An LmLib error occurred while executing the command:\n";
    try {
        text << TreeItem(exception.itemPath)["Result"]["Execute"]["Command"].asString();
        text << ": \n";
        text << exception.errorSymbol();
        text << ": ";
        text << exception.errorText();
    } catch (...) {
        // If one of these texts cannot be read, the message has only the parts before it.
    }
}

std::string messageText(const LmLibException &exception) {
    std::ostringstream text;
    if (exception.errorCode == LmLibResultExecutionFailed) {
        writeCommandFailure(text, exception);
    } else {
        text << "An LmLib error occurred when accessing the item:\n"
             << exception.itemPath << ": \n"
             << "\t" << exception.errorName;
    }
    return text.str();
}

}  // namespace

void showErrorReport(const LmLibException &exception) {
    const QCoreApplication *application = QCoreApplication::instance();
    if (application == nullptr || QThread::currentThread() != application->thread()) {
        throw;
    }
    const std::string details = detailText(exception);
    const std::string message = messageText(exception);
    showMessageBox(message, QMessageBox::Critical, details);
}
