#include "app/log_message_handler.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QRegularExpression>
#include <QString>
#include <array>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/local_encoding.h"

namespace {

using Writes = std::vector<std::string>;

// Runs the action and returns what it writes to the standard error stream, one element per write. While the action
// runs, the stream is a datagram socket, which keeps the writes apart.
Writes writesToStandardError(const std::function<void()> &action) {
    std::array<int, 2> sockets{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, sockets.data()), 0);
    const int savedError = dup(STDERR_FILENO);
    dup2(sockets[0], STDERR_FILENO);
    action();
    dup2(savedError, STDERR_FILENO);

    Writes writes;
    std::array<char, 100000> buffer{};
    ssize_t size = 0;
    while ((size = recv(sockets[1], buffer.data(), buffer.size(), MSG_DONTWAIT)) >= 0) {
        writes.emplace_back(buffer.data(), static_cast<std::size_t>(size));
    }
    for (const int descriptor : {savedError, sockets[0], sockets[1]}) {
        close(descriptor);
    }
    return writes;
}

class LogMessageHandlerTest : public testing::Test {
public:
    ~LogMessageHandlerTest() override { qInstallMessageHandler(nullptr); }

protected:
    LogMessageHandlerTest() { installMessageHandler(); }
};

TEST_F(LogMessageHandlerTest, writesEachRecordInOnePiece) {
    const std::string collation = "Numeric mode unsupported in the posix collation implementation";
    const std::string longText(70000, 'y');
    const LocalEncoding encoding;
    const auto unknownType = static_cast<QtMsgType>(7);
    const struct {
        QtMsgType type;
        std::string text;     // in UTF-8
        std::string written;  // the text before the context; empty if nothing is written
    } rows[] = {{QtDebugMsg, "a", ""},
                {QtInfoMsg, "a", ""},
                {QtCriticalMsg, "a", "Critical: a"},
                {QtFatalMsg, "a", "Fatal: a"},
                {unknownType, "a", ": a"},
                {QtWarningMsg, "", "Warning: "},
                {QtWarningMsg, collation, ""},
                {QtCriticalMsg, collation, "Critical: " + collation},
                {QtWarningMsg, collation + ".", "Warning: " + collation + "."},
                {QtWarningMsg, "%s %n\n%d", "Warning: %s %n\n%d"},
                {QtWarningMsg, encoding.euro().toStdString(), std::string("Warning: ") + encoding.euroByte},
                {QtWarningMsg, longText, "Warning: " + longText}};
    const QtMessageHandler handler = qInstallMessageHandler(nullptr);
    for (const auto &row : rows) {
        const auto writes = writesToStandardError([&] {
            // The test calls the handler itself, in place of the toolkit. No logging function sends the unknown type,
            // and the logging function for a fatal message would end the test.
            handler(row.type, QMessageLogContext("f.cpp", 7, "g", "default"), QString::fromStdString(row.text));
        });
        EXPECT_EQ(writes, row.written.empty() ? Writes() : Writes{row.written + " (f.cpp:7, g)\n\n"});
    }
}

TEST_F(LogMessageHandlerTest, writesAFatalMessageBeforeTheEnd) {
    EXPECT_DEATH(QMessageLogger("file.cpp", 12, "function").fatal("the end"),
                 "^Fatal: the end \\(file.cpp:12, function\\)\n\n$");
}

TEST_F(LogMessageHandlerTest, keepsTheRecordsOfThreadsWholeEvenWithoutAContext) {
    std::vector<std::thread> threads;
    testing::internal::CaptureStderr();
    for (const char letter : std::string("abcdefgh")) {
        threads.emplace_back([letter] {
            for (std::size_t length = 1; length < 5000; length += 50) {
                QMessageLogger(nullptr, 0, nullptr).warning("%s", std::string(length, letter).c_str());
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    QString written = QString::fromStdString(testing::internal::GetCapturedStderr());
    EXPECT_EQ(written.count("Warning: "), 8 * 100);
    written.remove(QRegularExpression("Warning: ([a-h])\\1*+ \\(:0, \\)\n\n"));
    EXPECT_EQ(written.toStdString(), "");
}

}  // namespace
