// Tests the session without a window, from files to a result. A function of the test stands in for the calibration.
#include <QDir>
#include <QFile>
#include <QImage>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <mutex>

#include "viewer/session/session.h"

namespace {

const QString exampleFolder = QStringLiteral(VIEWER_EXAMPLE);

QString examplePhotograph(int number) {
    return QString("%1/photograph-%2.jpg").arg(exampleFolder).arg(number, 2, 10, QChar('0'));
}

QStringList namesOf(const Session &session) {
    QStringList names;
    for (const SessionPhotograph &photograph : session.photographs()) {
        names << QFileInfo(photograph.path).fileName();
    }
    return names;
}

}  // namespace

class SessionTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void readsPhotographsAndNamesThoseThatDoNotHelp();
    void listsFoldersInNaturalOrderAndNoFileTwice();
    void calibratesOnceAfterReadingAndAgainAfterChanges();
    void showsAFirstResultWhileManyAreRead();
    void dropsResultsThatAreOutOfDate();
    void cancelsReading();
    void readsAgainForAnotherBoard();
    void answersWhileItWorks();

private:
    // Stands in for the calibration. It waits for `gate` if that is set, and records its arguments.
    SessionResult calibrate(const QVector<SessionPhotograph> &photographs, const SessionSettings &settings,
                            const calibration::CalibrateOptions &options);
    QVector<int> includedIn(int call) const;
    int calls() const;
    Session::Calibrate scripted() {
        return [this](const auto &photographs, const auto &settings, const auto &options) {
            return calibrate(photographs, settings, options);
        };
    }

    struct Call {
        QVector<int> included;
        SessionSettings settings;
        bool hasPrevious = false;
        bool wasCancelled = false;
    };
    mutable std::mutex mutex;
    QVector<Call> record;
    std::unique_ptr<QSemaphore> gate;
};

void SessionTest::init() {
    record.clear();
    gate.reset();
}

SessionResult SessionTest::calibrate(const QVector<SessionPhotograph> &photographs, const SessionSettings &settings,
                                     const calibration::CalibrateOptions &options) {
    Call call;
    call.settings = settings;
    call.hasPrevious = options.previous != nullptr;
    for (const SessionPhotograph &photograph : photographs) {
        if (photograph.isIncluded && photograph.readings && !photograph.readings->empty()) {
            call.included << photograph.id;
        }
    }
    if (gate) {
        gate->acquire();
    }
    call.wasCancelled = options.isCancelled();
    const std::lock_guard<std::mutex> lock(mutex);
    record.append(call);
    if (call.wasCancelled) {
        throw calibration::Cancelled();
    }
    SessionResult result;
    result.calibration = std::make_shared<calibration::Calibration>();
    result.problem = QString::number(record.size());
    return result;
}

int SessionTest::calls() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return record.size();
}

QVector<int> SessionTest::includedIn(int call) const {
    const std::lock_guard<std::mutex> lock(mutex);
    return record.value(call).included;
}

void SessionTest::readsPhotographsAndNamesThoseThatDoNotHelp() {
    const QTemporaryDir folder;
    QImage blank(320, 240, QImage::Format_Grayscale8);
    blank.fill(128);
    QVERIFY(blank.save(folder.filePath("blank.png")));
    QFile broken(folder.filePath("broken.jpg"));
    QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("not a picture") > 0);
    broken.close();

    Session session(scripted());
    session.add({examplePhotograph(1), folder.filePath("blank.png"), broken.fileName(), folder.filePath("gone.jpg")});
    QTRY_COMPARE_WITH_TIMEOUT(calls(), 1, 20000);
    const auto &list = session.photographs();
    QCOMPARE(list.size(), 4);
    QVERIFY(list[0].problem.isEmpty());
    QCOMPARE(list[0].readings->size(), size_t(5));
    QCOMPARE(QSize(list[0].width, list[0].height), QSize(1440, 1080));
    QCOMPARE(list[0].thumbnail.size(), QSize(160, 120));
    QVERIFY2(list[1].problem.contains("No pattern"), qPrintable(list[1].problem));
    QCOMPARE(list[2].state, PhotographState::Unreadable);
    QVERIFY2(list[2].problem.contains("broken.jpg"), qPrintable(list[2].problem));
    QVERIFY2(list[3].problem.contains("gone"), qPrintable(list[3].problem));
    QCOMPARE(includedIn(0), QVector<int>{list[0].id});
}

void SessionTest::listsFoldersInNaturalOrderAndNoFileTwice() {
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkpath("below"));
    for (const char *name : {"shot10.png", "shot2.png", "below/shot1.png", "notes.txt"}) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    Session session(scripted());
    session.add({folder.path(), folder.filePath("shot2.png")});
    session.add({folder.filePath("below")});
    QTRY_COMPARE(session.photographs().size(), 3);
    QTRY_VERIFY(!session.isReading());
    QCOMPARE(namesOf(session), QStringList({"shot1.png", "shot2.png", "shot10.png"}));
}

void SessionTest::calibratesOnceAfterReadingAndAgainAfterChanges() {
    Session session(scripted());
    session.add({examplePhotograph(1), examplePhotograph(2)});
    QTRY_VERIFY_WITH_TIMEOUT(session.result() != nullptr, 20000);
    QCOMPARE(calls(), 1);
    QVERIFY(!record[0].hasPrevious);
    const int first = session.photographs()[0].id;
    const int second = session.photographs()[1].id;

    session.setIncluded({first}, false);
    QTRY_COMPARE(session.result()->problem, QString("2"));
    QCOMPARE(includedIn(1), QVector<int>{second});
    QVERIFY(record[1].hasPrevious);

    SessionSettings settings = session.settings();
    settings.lens = calibration::LensModel::Fisheye;
    session.setSettings(settings);
    session.setIncluded({first}, true);  // the two changes start one calibration
    QTRY_COMPARE(session.result()->problem, QString("3"));
    QCOMPARE(includedIn(2), (QVector<int>{first, second}));
    QVERIFY(record[2].settings.lens == calibration::LensModel::Fisheye);

    session.calibrateAnew();
    QTRY_COMPARE(session.result()->problem, QString("4"));
    QVERIFY(!record[3].hasPrevious);

    session.remove({second});
    QTRY_COMPARE(session.result()->problem, QString("5"));
    QCOMPARE(includedIn(4), QVector<int>{first});
    QVERIFY(session.photograph(second) == nullptr);
}

// Models that were chosen from some of the photographs must be chosen again from all of them.
void SessionTest::showsAFirstResultWhileManyAreRead() {
    const QTemporaryDir folder;
    for (int i = 0; i < 30; ++i) {
        QVERIFY(QFile::link(examplePhotograph(1), folder.filePath(QString("%1.jpg").arg(i))));
    }
    Session session(scripted());
    QVector<bool> wasReading;
    connect(&session, &Session::resultChanged, this, [&] { wasReading << session.isReading(); });
    session.add({folder.path()});
    QTRY_COMPARE_WITH_TIMEOUT(wasReading, (QVector<bool>{true, false}), 60000);
    QVERIFY(includedIn(0).size() >= 12 && includedIn(0).size() < 30);
    QCOMPARE(includedIn(1).size(), 30);
    QVERIFY(!record[1].hasPrevious);
}

void SessionTest::dropsResultsThatAreOutOfDate() {
    Session session(scripted());
    session.add({examplePhotograph(1)});
    QTRY_COMPARE_WITH_TIMEOUT(calls(), 1, 20000);
    QTRY_VERIFY(session.result() != nullptr);
    const QSignalSpy results(&session, &Session::resultChanged);
    gate = std::make_unique<QSemaphore>();
    session.calibrateAnew();
    QTRY_VERIFY(session.isCalibrating());
    session.setIncluded({session.photographs()[0].id}, false);
    gate->release(2);
    QTRY_COMPARE(session.result()->problem, QString("3"));
    QVERIFY(record[1].wasCancelled);
    QCOMPARE(results.count(), 1);
}

void SessionTest::cancelsReading() {
    Session session(scripted());
    session.add({exampleFolder});
    QTRY_VERIFY(session.isReading());
    session.cancelReading();
    QVERIFY(!session.isReading());
    const int left = session.photographs().size();
    QVERIFY(left < 12);
    QTRY_COMPARE(calls(), 1);
    QCOMPARE(session.photographs().size(), left);
    for (const SessionPhotograph &photograph : session.photographs()) {
        QCOMPARE(photograph.state, PhotographState::Read);
    }
}

void SessionTest::readsAgainForAnotherBoard() {
    Session session(scripted());
    session.add({examplePhotograph(1)});
    QTRY_COMPARE_WITH_TIMEOUT(calls(), 1, 20000);
    SessionSettings settings;
    settings.board = QSize(9, 6);
    session.setSettings(settings);
    QVERIFY(session.isReading());
    QCOMPARE(session.photographs()[0].state, PhotographState::Waiting);
    QTRY_COMPARE_WITH_TIMEOUT(calls(), 2, 20000);
    QCOMPARE(session.photographs()[0].readings->size(), size_t(5));
}

// The longest time without an event must stay short, however much work is going on.
void SessionTest::answersWhileItWorks() {
    QElapsedTimer sinceTick;
    qint64 longest = 0;
    QTimer ticks;
    connect(&ticks, &QTimer::timeout, this, [&] { longest = qMax(longest, sinceTick.restart()); });
    Session session(scripted());
    sinceTick.start();
    ticks.start(5);
    session.add({exampleFolder});
    QTRY_COMPARE_WITH_TIMEOUT(calls(), 1, 60000);
    QCOMPARE(session.photographs().size(), 12);
    // The limit is many times the time needed, because other processes may use the processors too.
    QVERIFY2(longest < 1000, qPrintable(QString("%1 ms without an event").arg(longest)));
}

QTEST_GUILESS_MAIN(SessionTest)
#include "session_test.moc"
