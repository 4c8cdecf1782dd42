// The way to the viewer: a recording program stands in for it.
#include <QFile>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"

using driven_window::find;

namespace {

void setViewer(const QString &path) {
    QString escaped = path;
    escaped.replace('\\', "\\\\").replace('"', "\\\"");
    scripted_lmlib64::setNode("/Path/Application/LmView", ("\"" + escaped + "\"").toStdString());
}

void writeFile(const QString &path, const QByteArray &content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QByteArray contentOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class OpenCalTabCalibrationTest : public QObject {
    Q_OBJECT

private slots:
    void init() { scripted_lmlib64::loadDefaultScript(); }
    void everyClickStartsTheViewerWithOneArgument();
    void saysWhyThereIsNoViewer_data();
    void saysWhyThereIsNoViewer();
};

void OpenCalTabCalibrationTest::everyClickStartsTheViewerWithOneArgument() {
#if defined(Q_OS_WIN)
    QSKIP("the recording program is a shell script");
#endif
    const QTemporaryDir folder;
    const QString record = folder.filePath("record");
    const QString viewer = folder.filePath("the viewer");
    writeFile(viewer, "#!/bin/sh\nprintf '%s:%s\\n' \"$#\" \"$*\" >> '" + record.toLocal8Bit() + "'\n");
    QVERIFY(QFile::setPermissions(viewer, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    setViewer(viewer);
    const MainWindow window;
    scripted_lmlib64::clearCalls();

    find<QPushButton>(window, "calibrateBtn")->click();
    QTRY_COMPARE(contentOf(record), QByteArray("1:--caltab-calibration\n"));
    find<QTabWidget>(window, "patternType")->setCurrentIndex(3);
    find<QPushButton>(window, "calibrateBtn")->click();
    QTRY_COMPARE(contentOf(record), QByteArray("1:--caltab-calibration\n1:--caltab-calibration\n"));
    QCOMPARE(recorded_calls::all().first(), QString("lmLibGetString /Path/Application/LmView [no result]"));
}

void OpenCalTabCalibrationTest::saysWhyThereIsNoViewer_data() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("message");  // with %1 for the path
    QTest::newRow("missing file") << "missing"
                                  << "%1 does not exist";
    QTest::newRow("data file") << "data"
                               << "%1 is not executable";
    QTest::newRow("name with a placeholder") << "50%1"
                                             << "%1 does not exist";
    QTest::newRow("no node") << ""
                             << " does not exist";
    QTest::newRow("no text") << "number"
                             << " does not exist";
}

void OpenCalTabCalibrationTest::saysWhyThereIsNoViewer() {
    QFETCH(QString, kind);
    QFETCH(QString, message);
    const QTemporaryDir folder;
    const QString path = folder.filePath(kind);
    writeFile(folder.filePath("data"), "no program");
    if (kind.isEmpty()) {
        scripted_lmlib64::eraseNode("/Path/Application/LmView");
    } else if (kind == "number") {
        scripted_lmlib64::setNode("/Path/Application/LmView", "1");
    } else {
        setViewer(path);
    }
    const MainWindow window;
    QString text;
    driven_window::whenOpened<QMessageBox>([&](QMessageBox *box) {
        text = box->text();
        QCOMPARE(box->windowTitle(), QString("Error"));
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QVERIFY(box->parent() == nullptr);
        box->accept();
    });
    find<QPushButton>(window, "calibrateBtn")->click();
    QCOMPARE(text, message.replace("%1", path));
}

QTEST_MAIN(OpenCalTabCalibrationTest)
#include "open_cal_tab_calibration_test.moc"
