#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>
#include <filesystem>
#include <fstream>

#include "tests/scripted_lmlib64/scripted_lmlib64.h"
#include "tooltips/manual_placeholder.h"

namespace {

const std::string OnlineManual = "https://manual.vistrel.example";

}  // namespace

class ManualPlaceholderTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void prefersTheFolderWithAnIndex();
    void fallsBackToTheOnlineManual_data();
    void fallsBackToTheOnlineManual();
    void keepsUtf8AndConvertsTheLocalEncoding_data();
    void keepsUtf8AndConvertsTheLocalEncoding();
    void replacesEveryOccurrence_data();
    void replacesEveryOccurrence();

private:
    // Makes the folder with an index page in it and returns its path.
    std::string makeManual(const std::string &name);

    QScopedPointer<QTemporaryDir> directory;
};

void ManualPlaceholderTest::init() {
    scripted_lmlib64::reset();
    directory.reset(new QTemporaryDir);
    QVERIFY(directory->isValid());
}

// By the bytes of the names, which the toolkit cannot remove when they are not text.
void ManualPlaceholderTest::cleanup() {
    std::filesystem::remove_all(directory->path().toStdString());
}

std::string ManualPlaceholderTest::makeManual(const std::string &name) {
    std::string folder = directory->path().toStdString() + "/" + name;
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/index.html") << "manual";
    return folder;
}

void ManualPlaceholderTest::prefersTheFolderWithAnIndex() {
    // Separators and blanks stay as they are.
    const std::string folder = makeManual("a manual//of mine/");
    lmLibSetString(nullptr, "/Path/Manual", folder.c_str());
    QCOMPARE(makeManualPlaceholder(), Placeholder("%MANUAL%", "file:///" + folder));
}

void ManualPlaceholderTest::fallsBackToTheOnlineManual_data() {
    QTest::addColumn<QString>("node");
    QTest::newRow("no node") << QString();
    QTest::newRow("empty") << "\"\"";
    QTest::newRow("folder without an index") << "\"" + QDir::tempPath() + "\"";
    QTest::newRow("folder that is not there") << "\"/nowhere/at/all\"";
    QTest::newRow("not a text") << "5";
}

void ManualPlaceholderTest::fallsBackToTheOnlineManual() {
    QFETCH(QString, node);
    if (!node.isNull()) {
        scripted_lmlib64::setNode("/Path/Manual", node.toStdString());
    }
    QCOMPARE(makeManualPlaceholder(), Placeholder("%MANUAL%", OnlineManual));
}

void ManualPlaceholderTest::keepsUtf8AndConvertsTheLocalEncoding_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("UTF-8") << QByteArray(
        "B\xC3\xBC"
        "cher");
    QTest::newRow("Latin-1") << QByteArray(
        "B\xFC"
        "cher");
}

void ManualPlaceholderTest::keepsUtf8AndConvertsTheLocalEncoding() {
    QFETCH(QByteArray, name);
    QTextCodec *const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const std::string folder = makeManual(name.toStdString());
    lmLibSetString(nullptr, "/Path/Manual", folder.c_str());
    const Placeholder placeholder = makeManualPlaceholder();
    QTextCodec::setCodecForLocale(before);
    const std::string expected = "file:///" + directory->path().toStdString() + "/B\xC3\xBC" + "cher";
    QCOMPARE(placeholder.second, expected);
}

void ManualPlaceholderTest::replacesEveryOccurrence_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << "text"
                          << "text";
    QTest::newRow("twice") << "%MANUAL%/a and %MANUAL%/b" << QString::fromUtf8("file:///ü/a and file:///ü/b");
    QTest::newRow("lower case") << "%manual%"
                                << "%manual%";
    QTest::newRow("in table order") << "%FIRST%" << QString::fromUtf8("file:///ü");
}

void ManualPlaceholderTest::replacesEveryOccurrence() {
    QFETCH(QString, text);
    QFETCH(QString, expected);
    setPlaceholderTable({{"%FIRST%", "%MANUAL%"}, {"%MANUAL%", "file:///\xC3\xBC"}});
    QCOMPARE(replacePlaceholders(text), expected);
    setPlaceholderTable({});
    QCOMPARE(replacePlaceholders(text), text);
}

QTEST_MAIN(ManualPlaceholderTest)
#include "manual_placeholder_test.moc"
