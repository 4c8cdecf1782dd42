// Tests session files, and the copy of a session that survives a crash.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#ifdef Q_OS_UNIX
#include <sys/resource.h>

#include <csignal>
#endif

#include "tests/local_encoding.h"
#include "viewer/session/session_file.h"

namespace {

QByteArray contentsOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &text) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
}

// A path outside the session's folder.
QString elsewhere() {
    return QDir::rootPath() + "elsewhere/b.jpg";
}

SessionDocument someDocument(const QDir &folder) {
    SessionDocument document;
    document.photographs = {{folder.filePath("shots/a.jpg"), true}, {elsewhere(), false}};
    SessionSettings &settings = document.settings;
    settings.arrangement = Arrangement::Assembly;
    settings.lens = calibration::LensModel::Pinhole8;
    settings.mayBend = false;
    settings.gridSpacing = 12.5;
    settings.board = QSize(9, 6);
    settings.boardSquare = 25;
    settings.patternFiles = QStringList{"/prints/pattern.json"};
    settings.measured = {{3, {0.997, 1.001}}};
    settings.reference = 2;
    settings.frame = {{{0, 1, 2}, {3, 4, 5}, {6, 7, 8}}};
    return document;
}

TEST(SessionFile, keepsEverythingAndMovesWithItsFolder) {
    const QTemporaryDir temporary;
    const QDir first(temporary.filePath("first"));
    const QDir second(temporary.filePath("second"));
    ASSERT_TRUE(first.mkpath(".") && second.mkpath("."));
    ASSERT_EQ(saveSession(first.filePath("a.lmview"), someDocument(first)), QString());
    ASSERT_TRUE(QFile::rename(first.filePath("a.lmview"), second.filePath("a.lmview")));

    QString problem;
    const auto opened = openSession(second.filePath("a.lmview"), problem);
    ASSERT_TRUE(opened) << problem.toStdString();
    ASSERT_EQ(opened->photographs.size(), 2);
    EXPECT_EQ(opened->photographs[0].path, second.filePath("shots/a.jpg"));
    EXPECT_EQ(opened->photographs[1].path, elsewhere());
    EXPECT_FALSE(opened->photographs[1].isIncluded);
    const SessionSettings expected = someDocument(first).settings;
    const SessionSettings &settings = opened->settings;
    EXPECT_EQ(settings.arrangement, expected.arrangement);
    EXPECT_EQ(settings.lens, expected.lens);
    EXPECT_EQ(settings.mayBend, expected.mayBend);
    EXPECT_EQ(settings.gridSpacing, expected.gridSpacing);
    EXPECT_EQ(settings.board, expected.board);
    EXPECT_EQ(settings.boardSquare, expected.boardSquare);
    EXPECT_EQ(settings.patternFiles, expected.patternFiles);
    EXPECT_EQ(settings.measured, expected.measured);
    EXPECT_EQ(settings.reference, expected.reference);
    ASSERT_TRUE(settings.frame);
    EXPECT_TRUE(*settings.frame == *expected.frame);
}

TEST(SessionFile, saysWhatIsWrong) {
    const QTemporaryDir folder;
    write(folder.filePath("other.json"), R"({"Format": "something else"})");
    write(folder.filePath("cut.json"), R"({"Format": "LmView ses)");
    const struct {
        QString file;
        QString said;
    } cases[] = {
        {"gone.lmview", "cannot be opened"}, {"other.json", "is not a session"}, {"cut.json", "is not a session"}};
    for (const auto &one : cases) {
        QString problem;
        EXPECT_FALSE(openSession(folder.filePath(one.file), problem));
        EXPECT_TRUE(problem.contains(one.said) && problem.contains(one.file)) << problem.toStdString();
    }
    const QString problem = saveSession(folder.filePath("no/such/folder.lmview"), {});
    EXPECT_TRUE(problem.contains("folder.lmview")) << problem.toStdString();
}

#ifdef Q_OS_UNIX
TEST(SessionFile, mayHaveAnyName) {
    const LocalEncoding encoding;
    const QTemporaryDir folder;
    const QString file = folder.filePath(LocalEncoding::euro() + ".lmview");
    ASSERT_EQ(saveSession(file, someDocument(folder.path())), QString());
    QString problem;
    EXPECT_TRUE(openSession(file, problem)) << problem.toStdString();
}

TEST(SessionFile, keepsTheOldFileOnAFullDisk) {
    const QTemporaryDir folder;
    const QString file = folder.filePath("a.lmview");
    RecoveryCopy copy(folder.filePath("copies"));
    ASSERT_EQ(saveSession(file, {}), QString());
    ASSERT_EQ(copy.keep({}), QString());
    const QTemporaryDir other;
    ASSERT_EQ(saveSession(other.filePath("crashed.json"), someDocument(other.path())), QString());
    RecoveryCopy next(other.path());
    std::signal(SIGXFSZ, SIG_IGN);
    // A limit on the size of files stands in for the full disk. SIGXFSZ is ignored, so that a write beyond the limit
    // fails without ending this process.
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full{100, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    const QString problem = saveSession(file, someDocument(folder.path()));
    const QString copyProblem = copy.keep(someDocument(folder.path()));
    const auto leftOver = next.takeLeftOver();
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_TRUE(leftOver);
    EXPECT_TRUE(QFile::exists(other.filePath("crashed.json"))) << "the only copy on disk is gone";
    EXPECT_TRUE(problem.contains("a.lmview")) << problem.toStdString();
    EXPECT_TRUE(copyProblem.contains(".json")) << copyProblem.toStdString();
    QString openProblem;
    EXPECT_TRUE(openSession(file, openProblem)) << openProblem.toStdString();
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"a.lmview"});
}
#endif

TEST(SessionFile, ignoresValuesThatMakeNoSense) {
    const QByteArray text = R"({"Lens": "pinhole7", "GridSpacing": -3, "BoardSquare": "x", "Board": [2, 100000],
        "Measured": {"1": [0.1, 1], "2": [1.001, 0.999]}, "ReferencePattern": 99, "Frame": [{}, {}], "New": 1})";
    const SessionSettings settings = settingsFromJson(QJsonDocument::fromJson(text).object());
    EXPECT_EQ(settings.lens, std::nullopt);
    EXPECT_EQ(settings.gridSpacing, 0);
    EXPECT_EQ(settings.boardSquare, 0);
    EXPECT_EQ(settings.board, std::nullopt);
    EXPECT_EQ(settings.measured.keys(), QList<int>{2});
    EXPECT_EQ(settings.reference, std::nullopt);
    EXPECT_FALSE(settings.frame);
}

TEST(RecoveryCopy, isLeftOnlyByACrash) {
    const QTemporaryDir folder;
    const SessionDocument document = someDocument(folder.path());
    QByteArray left;
    {
        RecoveryCopy running(folder.path());
        running.keep(document);
        const QStringList files = QDir(folder.path()).entryList({"*.json"});
        ASSERT_EQ(files.size(), 1);
        left = contentsOf(folder.filePath(files[0]));
        RecoveryCopy other(folder.path());
        EXPECT_FALSE(other.takeLeftOver()) << "took the session of a program that runs";
    }
    EXPECT_TRUE(QDir(folder.path()).entryList({"*.json"}).isEmpty()) << "a session that ended well left its copy";

    write(folder.filePath("crashed.json"), left);
    RecoveryCopy next(folder.path());
    const auto found = next.takeLeftOver();
    ASSERT_TRUE(found);
    EXPECT_EQ(found->photographs.size(), 2);
    EXPECT_TRUE(found->settings == document.settings);
    RecoveryCopy third(folder.path());
    EXPECT_FALSE(third.takeLeftOver()) << "two programs took the same session";
}

}  // namespace
