#include "app/log_message_handler.h"

#include <QByteArray>
#include <QMessageLogContext>
#include <QString>
#include <QtGlobal>
#include <cstddef>
#include <cstdio>
#include <string>

namespace {

const char *labelOf(QtMsgType type) {
    switch (type) {
        case QtDebugMsg:
            return "Debug";
        case QtInfoMsg:
            return "Info";
        case QtWarningMsg:
            return "Warning";
        case QtCriticalMsg:
            return "Critical";
        case QtFatalMsg:
            return "Fatal";
    }
    return "";
}

bool isWritten(QtMsgType type, const QByteArray &text) {
    // The toolkit prints this harmless warning if it was built without the collation library.
    static const QByteArray collationWarning("Numeric mode unsupported in the posix collation implementation");
    if (type == QtWarningMsg) {
        return text != collationWarning;
    }
    return type != QtDebugMsg && type != QtInfoMsg;
}

std::string formatted(const char *label, const QByteArray &text, const QMessageLogContext &context) {
    const char *const pattern = "%s: %s (%s:%u, %s)\n";
    const char *const file = context.file == nullptr ? "" : context.file;
    const char *const function = context.function == nullptr ? "" : context.function;
    const auto line = static_cast<unsigned>(context.line);

    const int length = std::snprintf(nullptr, 0, pattern, label, text.constData(), file, line, function);
    if (length <= 0) {
        return {};
    }
    std::string record(static_cast<std::size_t>(length), '\0');
    // snprintf also writes a terminating zero. A string's buffer has room for it after the last character.
    std::snprintf(record.data(), record.size() + 1, pattern, label, text.constData(), file, line, function);
    return record;
}

void writeLogMessage(QtMsgType type, const QMessageLogContext &context, const QString &message) {
    const QByteArray text = message.toLocal8Bit();
    if (!isWritten(type, text)) {
        return;
    }
    std::string record = formatted(labelOf(type), text, context);
    if (record.empty()) {
        return;
    }
    // An empty line follows every record. The stream is unbuffered, so one call of fwrite is one write, and the records
    // of different threads do not mix.
    record += '\n';
    std::fwrite(record.data(), 1, record.size(), stderr);
    std::fflush(stderr);
}

}  // namespace

void installMessageHandler() {
    qInstallMessageHandler(writeLogMessage);
}
