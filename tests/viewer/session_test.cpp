// Tests the session without a window, from files to a result. A function of the test stands in for the calibration.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <mutex>

#include "tests/local_encoding.h"
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

SessionPhotograph readPhotograph(const QString &path, const SessionSettings &settings = {}) {
    SessionPhotograph photograph;
    photograph.path = path;
    readFromFile(photograph, settings, [] { return false; });
    return photograph;
}

QByteArray contentsOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

}  // namespace

class SessionTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void readsPhotographsAndSaysWhyOthersDoNotHelp();
    void listsFoldersInNaturalOrderAndNoFileTwice();
    void readsFilesOfAnyNameAndSaysWhatIsWrongWithThem();
    void readsThePlainBoardOfTheSettings();
    void calibratesOnceAfterReadingAndAgainAfterChanges();
    void opensADocumentThatReplacesAllPhotographs();
    void excludesPhotographsWhileItReads();
    void showsAFirstResultWhileManyAreRead();
    void dropsResultsThatAreOutOfDate();
    void cancelsReading();
    void readsAgainForAnotherBoard();
    void answersWhileItWorks();

private:
    // Stands in for the calibration. It waits for `gate` if that is set, and records its arguments. The result's
    // `problem` is the number of the call, so that a test knows which call made a result.
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

void SessionTest::readsPhotographsAndSaysWhyOthersDoNotHelp() {
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

void SessionTest::readsFilesOfAnyNameAndSaysWhatIsWrongWithThem() {
    const QTemporaryDir folder;
    QImage noise(400, 300, QImage::Format_Grayscale8);
    for (int i = 0; i < 400 * 300; ++i) {
        noise.bits()[i] = uchar((i * 7919 + i / 13) % 251);
    }
    QVERIFY(noise.save(folder.filePath("noise.jpg"), "JPEG", 90));
    const QByteArray whole = contentsOf(folder.filePath("noise.jpg"));
    // The EXIF data have one entry, the camera's maker.
    const char exif[] =
        "\xFF\xE1\0\x22"
        "Exif\0\0II*\0\x08\0\0\0\x01\0\x0F\x01\x02\0\x04\0\0\0Abc\0\0\0\0\0";
    write(folder.filePath("exif.jpg"), whole.left(2) + QByteArray(exif, sizeof exif - 1) + whole.mid(2));
    write(folder.filePath("CAPITAL.JPG"), whole);
    write(folder.filePath("cut.jpg"), whole.left(whole.size() / 2));

    QCOMPARE(photographFilesIn({folder.path()}).size(), 4);
    const SessionPhotograph good = readPhotograph(folder.filePath("CAPITAL.JPG"));
    QCOMPARE(good.state, PhotographState::Read);
    QCOMPARE(QSize(good.width, good.height), QSize(400, 300));
    QVERIFY(good.exifCamera.empty());
    QCOMPARE(readPhotograph(folder.filePath("exif.jpg")).exifCamera, std::string("Abc"));
    const SessionPhotograph cut = readPhotograph(folder.filePath("cut.jpg"));
    QVERIFY2(cut.problem.contains("incomplete"), qPrintable(cut.problem));
    QVERIFY(cut.isTruncated && !good.isTruncated);
#ifdef Q_OS_UNIX
    const LocalEncoding encoding;
    // The folder is declared after `encoding`, so it is removed while `encoding` still exists. With another encoding,
    // the file in the folder would not be found and not be removed.
    const QTemporaryDir localFolder;
    const QString euro = localFolder.filePath(LocalEncoding::euro() + ".jpg");
    write(euro, whole);
    QCOMPARE(readPhotograph(euro).state, PhotographState::Read);
    QCOMPARE(loadPicture(euro).size(), QSize(400, 300));
#endif
}

void SessionTest::readsThePlainBoardOfTheSettings() {
    const QTemporaryDir folder;
    QImage board(640, 480, QImage::Format_Grayscale8);
    board.fill(230);
    QPainter painter(&board);
    for (int column = 0; column < 10; ++column) {
        for (int row = 0; row < 7; ++row) {
            painter.fillRect(120 + 40 * column, 100 + 40 * row, 40, 40,
                             (column + row) % 2 == 0 ? Qt::black : Qt::white);
        }
    }
    painter.end();
    QVERIFY(board.save(folder.filePath("board.png")));
    SessionSettings settings;
    QCOMPARE(readPhotograph(folder.filePath("board.png"), settings).readings->size(), size_t(0));
    settings.board = QSize(9, 6);
    const SessionPhotograph read = readPhotograph(folder.filePath("board.png"), settings);
    QCOMPARE(read.readings->size(), size_t(1));
    const auto &last = read.readings->at(0).corners.back();
    QCOMPARE(QPoint(last.lattice.x, last.lattice.y), QPoint(9, 6));
    QVERIFY(cv::norm(last.image - cv::Point2f(479.5F, 339.5F)) < 0.5);
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

    session.remove({first});
    QTRY_COMPARE(session.result()->problem, QString("5"));
    QCOMPARE(includedIn(4), QVector<int>{second});
    QVERIFY(session.photograph(first) == nullptr);
    QCOMPARE(session.photograph(second)->path, QFileInfo(examplePhotograph(2)).absoluteFilePath());

    settings.mayBend = false;
    session.setSettings(settings);
    QTRY_COMPARE(session.result()->problem, QString("6"));
    QVERIFY(!record[5].settings.mayBend);
}

void SessionTest::opensADocumentThatReplacesAllPhotographs() {
    Session session(scripted());
    session.add({examplePhotograph(1), examplePhotograph(4)});
    QTRY_VERIFY_WITH_TIMEOUT(session.result() != nullptr, 20000);
    QCOMPARE(session.readingTotal(), 2);
    SessionDocument document;
    document.photographs = {{examplePhotograph(2), false}, {examplePhotograph(3), true}};
    document.settings.arrangement = Arrangement::Rig;
    session.open(document);
    QVERIFY(session.result() == nullptr);
    QCOMPARE(namesOf(session), QStringList({"photograph-02.jpg", "photograph-03.jpg"}));
    QTRY_VERIFY_WITH_TIMEOUT(session.result() != nullptr, 20000);
    QCOMPARE(includedIn(1), QVector<int>{session.photographs()[1].id});
    QVERIFY(record[1].settings.arrangement == Arrangement::Rig);
    QVERIFY(!record[1].hasPrevious);
    QCOMPARE(session.readingTotal(), 2);  // counts only the photographs of this document
    QCOMPARE(session.readingDone(), 2);

    const SessionDocument same = session.document();
    QVERIFY(same.settings == document.settings);
    QCOMPARE(same.photographs.size(), 2);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(same.photographs[i].path, document.photographs[i].path);
        QCOMPARE(same.photographs[i].isIncluded, document.photographs[i].isIncluded);
    }
}

void SessionTest::excludesPhotographsWhileItReads() {
    Session session(scripted());
    session.add({examplePhotograph(1), examplePhotograph(2)});
    QTRY_COMPARE(session.photographs().size(), 2);
    QVERIFY(session.isReading());
    session.setIncluded({session.photographs()[0].id}, false);
    QTRY_VERIFY_WITH_TIMEOUT(session.result() != nullptr, 20000);
    QVERIFY(!session.photographs()[0].isIncluded);
    QCOMPARE(includedIn(calls() - 1), QVector<int>{session.photographs()[1].id});
}

// The first result comes from only some of the photographs. The second calibration must choose the lens models and the
// bends of the prints again, from all photographs. So it must not start from the first result.
void SessionTest::showsAFirstResultWhileManyAreRead() {
    const QTemporaryDir folder;
    const QImage photograph = QImage(examplePhotograph(1)).scaledToWidth(720, Qt::SmoothTransformation);
    for (int i = 0; i < 30; ++i) {
        QVERIFY(photograph.save(folder.filePath(QString("%1.jpg").arg(i))));
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
    gate->release(2);  // one for the call that is out of date, one for the call that follows
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

// While photographs are read, the thread of the session must still handle its events, here those of a timer.
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
