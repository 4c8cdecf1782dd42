// Tests the way from LmCalTab's button "Calibrate an Assembly Pattern..." to the assembly file that LmView saves, with
// the real programs in real windows.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "tests/end_to_end/desktop.h"
#include "tests/end_to_end/driven_program.h"
#include "tests/end_to_end/file_drag.h"
#include "tests/viewer/bad_photographs.h"
#include "tests/viewer/example_truth.h"

namespace {

const QString exampleFolder = QStringLiteral(VIEWER_EXAMPLE);
constexpr int exampleCount = 12;

QJsonObject jsonIn(const QString &fileName) {
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

int countOf(const QJsonObject &calibration) {
    return calibration["Photographs"].toArray().size() + calibration["UnusedPhotographs"].toArray().size();
}

// Returns the names of the photographs that the calibration left out, completely or in part. A photograph
// counts only if the reason is given in words.
QSet<QString> namedIn(const QJsonObject &calibration) {
    QSet<QString> names;
    for (const QJsonValue &unused : calibration["UnusedPhotographs"].toArray()) {
        if (unused["Reason"].toString().contains(' ')) {
            names << unused["File"].toString().section('/', -1);
        }
    }
    for (const QJsonValue &photograph : calibration["Photographs"].toArray()) {
        for (const QJsonValue &sighting : photograph["Sightings"].toArray()) {
            if (sighting["Reason"].toString().contains(' ')) {
                names << photograph["File"].toString().section('/', -1);
            }
        }
    }
    return names;
}

}  // namespace

class ViewerEndToEndTest : public QObject {
    Q_OBJECT

public:
    explicit ViewerEndToEndTest(const Desktop &usersDesktop) : desktop(usersDesktop) {}

private slots:
    void buttonLeadsToTheFileOfAnAssembly_data();
    void buttonLeadsToTheFileOfAnAssembly();

private:
    QString windowNamed(const QString &title) const {
        return desktop.xdotool({"search", "--onlyvisible", "--name", "^" + title + "$"}).split('\n').value(0);
    }
    // Uses "Save Results..." of the viewer as soon as there is a result. Returns the contents of calibration.json;
    // empty if a dialog does not open or close as expected.
    QJsonObject saveResults(const QString &folder) const;
    // Presses the keys until the window with this title is shown or, if `isThere` is false, is gone. They are pressed
    // repeatedly because a window that was just shown may miss the first key. False if all attempts fail.
    bool pressUntil(const QString &title, bool isThere, const QStringList &keys, int attempts) const;

    const Desktop &desktop;
};

bool ViewerEndToEndTest::pressUntil(const QString &title, bool isThere, const QStringList &keys, int attempts) const {
    const auto isDone = [&] { return windowNamed(title).isEmpty() != isThere; };
    for (int i = 0; i < attempts && !isDone(); ++i) {
        desktop.press(keys);
        static_cast<void>(QTest::qWaitFor(isDone, 1000));
    }
    return isDone();
}

QJsonObject ViewerEndToEndTest::saveResults(const QString &folder) const {
    const QString dialog = "Save Results to a Folder";
    const QString confirmation = "Save Results";
    // Without a result, the key has no effect.
    if (!pressUntil(dialog, true, {"ctrl+r"}, 120)) {
        return {};
    }
    desktop.waitForWindow(dialog);
    desktop.press({"ctrl+a"});
    desktop.type(folder);
    if (!pressUntil(dialog, false, {"Return"}, 10)) {
        return {};
    }
    desktop.waitForWindow(confirmation);
    const bool isClosed = pressUntil(confirmation, false, {"Return"}, 10);
    desktop.waitForWindow("LmView");
    return isClosed ? jsonIn(folder + "/calibration.json") : QJsonObject();
}

void ViewerEndToEndTest::buttonLeadsToTheFileOfAnAssembly_data() {
    QTest::addColumn<bool>("hasBadOnes");
    QTest::newRow("good photographs") << false;
    QTest::newRow("three bad ones among them") << true;
}

void ViewerEndToEndTest::buttonLeadsToTheFileOfAnAssembly() {
    QFETCH(const bool, hasBadOnes);
    const QTemporaryDir home;
    const QTemporaryDir results;
    const QTemporaryDir bad;
    QStringList badNames;
    if (hasBadOnes) {
        badNames = writeBadPhotographs(bad.path(), exampleFolder + "/photograph-01.jpg");
        QCOMPARE(badNames.size(), 3);
    }
    DrivenProgram program(desktop);
    QVERIFY(program.start(LMCALTAB_BUILD_TREE "/bin/LmCalTab", {{"XDG_DATA_HOME", home.path()}}));
    QVERIFY(program.showPage(DrivenProgram::Assembly));
    program.moveMouse(program.placeOf("calibrateBtn").center());
    program.click();
    const QRect viewer = DrivenProgram::geometryOf(desktop.waitForWindow("LmView"));
    FileDrag drag(desktop);
    QVERIFY(drag.drop({exampleFolder, bad.path()}, viewer.center()));

    // A first result may be there before all photographs are read.
    QJsonObject calibration = saveResults(results.path());
    for (int i = 0; i < 10 && countOf(calibration) < exampleCount + badNames.size(); ++i) {
        calibration = saveResults(results.path());
    }
    QCOMPARE(countOf(calibration), exampleCount + badNames.size());
    QCOMPARE(namedIn(calibration), QSet<QString>(badNames.begin(), badNames.end()));
    const auto error = greatestCornerError(results.filePath("assembly.json"));
    QVERIFY(error.has_value());
    QVERIFY2(*error < 0.05, qPrintable(QString("%1 mm").arg(*error)));

    // While LmView runs, it keeps a copy of its session in this folder.
    const auto copies = [&home] {
        return QDir(home.filePath("LmView/running-sessions")).entryList({"*.json"}, QDir::Files).size();
    };
    QCOMPARE(copies(), 1);
    QVERIFY(pressUntil("LmView", false, {"ctrl+q"}, 10));
    QCOMPARE(copies(), 0);
}

int main(int argumentCount, char **arguments) {
    const Desktop desktop{};
    const QApplication application(argumentCount, arguments);
    ViewerEndToEndTest test(desktop);
    return QTest::qExec(&test, argumentCount, arguments);
}

#include "viewer_test.moc"
