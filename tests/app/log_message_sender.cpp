// Sends messages through the program's message handler, for a test that reads this process's standard error
// stream.
//   log_message_sender fatal
//   log_message_sender threads <number of threads> <messages of each>
#include <QByteArray>
#include <QString>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "app/log_message_handler.h"

namespace {

// Sends messages of increasing length. Some lines are shorter and some are longer than a pipe's atomic write.
void sendWarnings(int thread, int count) {
    for (int i = 0; i < count; ++i) {
        const QString text = QStringLiteral("%1 %2 %3").arg(thread).arg(i).arg(QString(i * 20, QLatin1Char('x')));
        QMessageLogger(nullptr, 0, nullptr).warning("%s", text.toUtf8().constData());
    }
}

}  // namespace

int main(int argc, char **argv) {
    installMessageHandler();
    if (argc == 2 && std::strcmp(argv[1], "fatal") == 0) {
        QMessageLogger("file.cpp", 12, "function").fatal("the end");
    }
    if (argc != 4 || std::strcmp(argv[1], "threads") != 0) {
        return EXIT_FAILURE;
    }
    std::vector<std::thread> threads;
    const int messageCount = QByteArray(argv[3]).toInt();
    for (int thread = 0; thread < QByteArray(argv[2]).toInt(); ++thread) {
        threads.emplace_back(sendWarnings, thread, messageCount);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    return EXIT_SUCCESS;
}
