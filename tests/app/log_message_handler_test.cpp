#include "app/log_message_handler.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QByteArray>
#include <QProcess>
#include <QTest>
#include <array>
#include <string>
#include <vector>

namespace {

// Runs the action and returns what it writes to the standard error stream, one element per write. While the action
// runs, the stream is a datagram socket, which keeps the writes apart.
std::vector<std::string> writesToStandardError(void (*action)(const QByteArray &), const QByteArray &argument) {
    std::array<int, 2> sockets{};
    if (socketpair(AF_UNIX, SOCK_DGRAM, 0, sockets.data()) != 0) {
        qFatal("no socket pair");
    }
    const int savedError = dup(STDERR_FILENO);
    dup2(sockets[0], STDERR_FILENO);
    const QtMessageHandler testsHandler = qInstallMessageHandler(nullptr);
    installMessageHandler();
    action(argument);
    qInstallMessageHandler(testsHandler);
    dup2(savedError, STDERR_FILENO);

    std::vector<std::string> writes;
    std::vector<char> buffer(100000);
    ssize_t size = recv(sockets[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
    while (size >= 0) {
        writes.emplace_back(buffer.data(), static_cast<std::size_t>(size));
        size = recv(sockets[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
    }
    close(savedError);
    close(sockets[0]);
    close(sockets[1]);
    return writes;
}

// Calls the handler as the toolkit does. This also allows types that no logging function of the toolkit sends.
void send(QtMsgType type, const QMessageLogContext &context, const QString &text) {
    const QtMessageHandler handler = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(handler);
    handler(type, context, text);
}

QByteArray senderPath() {
    return QByteArray(LOG_MESSAGE_SENDER);
}

}  // namespace

class LogMessageHandlerTest : public QObject {
    Q_OBJECT

private slots:
    void writesEachRecordAtOnce_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("written");
        const QString collation = QStringLiteral("Numeric mode unsupported in the posix collation implementation");
        const QString longText(70000, QLatin1Char('y'));

        QTest::newRow("debug") << int(QtDebugMsg) << "a" << QByteArray();
        QTest::newRow("info") << int(QtInfoMsg) << "a" << QByteArray();
        QTest::newRow("warning") << int(QtWarningMsg) << "a" << QByteArray("Warning: a (f.cpp:7, g)\n\n");
        QTest::newRow("critical") << int(QtCriticalMsg) << "a" << QByteArray("Critical: a (f.cpp:7, g)\n\n");
        QTest::newRow("fatal") << int(QtFatalMsg) << "a" << QByteArray("Fatal: a (f.cpp:7, g)\n\n");
        QTest::newRow("unknown type") << 7 << "a" << QByteArray(": a (f.cpp:7, g)\n\n");
        QTest::newRow("empty") << int(QtWarningMsg) << "" << QByteArray("Warning:  (f.cpp:7, g)\n\n");
        QTest::newRow("collation warning") << int(QtWarningMsg) << collation << QByteArray();
        QTest::newRow("collation as critical")
            << int(QtCriticalMsg) << collation << "Critical: " + collation.toLatin1() + " (f.cpp:7, g)\n\n";
        QTest::newRow("collation warning and more") << int(QtWarningMsg) << collation + "."
                                                    << "Warning: " + collation.toLatin1() + ". (f.cpp:7, g)\n\n";
        QTest::newRow("format characters and lines")
            << int(QtWarningMsg) << "%s %n\n%d" << QByteArray("Warning: %s %n\n%d (f.cpp:7, g)\n\n");
        QTest::newRow("long") << int(QtWarningMsg) << longText
                              << "Warning: " + longText.toLatin1() + " (f.cpp:7, g)\n\n";
    }

    void writesEachRecordAtOnce() {
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(QByteArray, written);
        static int sentType;
        sentType = type;
        const auto writes = writesToStandardError(
            [](const QByteArray &argument) {
                send(static_cast<QtMsgType>(sentType), QMessageLogContext("f.cpp", 7, "g", "default"),
                     QString::fromUtf8(argument));
            },
            text.toUtf8());
        std::vector<std::string> expected;
        if (!written.isNull()) {
            expected.push_back(written.toStdString());
        }
        QCOMPARE(writes, expected);
    }

    void writesMessagesWithoutAContext() {
        const auto writes = writesToStandardError(
            [](const QByteArray &text) { QMessageLogger(nullptr, 0, nullptr).warning("%s", text.constData()); }, "a");
        QCOMPARE(writes, std::vector<std::string>{"Warning: a (:0, )\n\n"});
    }

    void writesAFatalMessageBeforeTheEnd() {
        QProcess sender;
        sender.start(QString::fromLocal8Bit(senderPath()), {QStringLiteral("fatal")});
        QVERIFY(sender.waitForFinished());
        QCOMPARE(sender.exitStatus(), QProcess::CrashExit);
        QCOMPARE(sender.readAllStandardError(), QByteArray("Fatal: the end (file.cpp:12, function)\n\n"));
    }

    void keepsTheRecordsOfThreadsWhole() {
        const int threadCount = 8;
        const int messageCount = 400;
        QProcess sender;
        sender.start(QString::fromLocal8Bit(senderPath()),
                     {QStringLiteral("threads"), QString::number(threadCount), QString::number(messageCount)});
        QVERIFY(sender.waitForFinished(60000));
        QCOMPARE(sender.exitCode(), 0);

        std::vector<int> nextMessage(threadCount, 0);
        const QList<QByteArray> lines = sender.readAllStandardError().split('\n');
        QCOMPARE(lines.size(), 2 * threadCount * messageCount + 1);
        for (int i = 0; i + 1 < lines.size(); i += 2) {
            const std::size_t thread = lines[i].mid(9, 1).toUInt();
            QVERIFY2(thread < nextMessage.size(), lines[i].constData());
            const int message = nextMessage[thread]++;
            const QByteArray expected = "Warning: " + QByteArray::number(static_cast<int>(thread)) + " " +
                                        QByteArray::number(message) + " " + QByteArray(message * 20, 'x') + " (:0, )";
            QCOMPARE(lines[i], expected);
            QCOMPARE(lines[i + 1], QByteArray());
        }
    }
};

QTEST_GUILESS_MAIN(LogMessageHandlerTest)
#include "log_message_handler_test.moc"
