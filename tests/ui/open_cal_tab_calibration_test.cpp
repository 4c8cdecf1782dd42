// Starting the viewer, which is replaced by a script that records its arguments.
#include <gtest/gtest.h>

#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/generator/recorded_calls.h"
#include "tests/value_printing.h"

using driven_window::find;

namespace {

const char *const viewerNode = "/Path/Application/LmView";

void writeFile(const QString &path, const QByteArray &content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QByteArray contentOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

#if defined(Q_OS_UNIX)
TEST(OpenCalTabCalibration, startsTheViewerWithOneArgumentAtEveryClick) {
    scripted_lmlib64::loadDefaultScript();
    const QTemporaryDir folder;
    const QString record = folder.filePath("record");
    const QString viewer = folder.filePath("the viewer");
    writeFile(viewer, "#!/bin/sh\nprintf '%s:%s\\n' \"$#\" \"$*\" >> '" + record.toLocal8Bit() + "'\n");
    ASSERT_TRUE(QFile::setPermissions(viewer, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    scripted_lmlib64::setNode(viewerNode, '"' + viewer.toStdString() + '"');
    const MainWindow window;
    scripted_lmlib64::clearCalls();
    QByteArray expected;
    for (int clicks = 0; clicks < 2; ++clicks) {
        find<QPushButton>(window, "calibrateBtn")->click();
        expected += "1:--caltab-calibration\n";
        EXPECT_TRUE(QTest::qWaitFor([&] { return contentOf(record) == expected; })) << contentOf(record).constData();
    }
    EXPECT_EQ(recorded_calls::all().first(), "lmLibGetString /Path/Application/LmView [no result]");
}
#endif

TEST(OpenCalTabCalibration, saysWhyThereIsNoViewer) {
    const QTemporaryDir folder;
    const QString data = folder.filePath("data");
    writeFile(data, "no program");
    const struct {
        QString nodeJson;
        QString message;
    } rows[] = {{'"' + folder.filePath("missing") + '"', folder.filePath("missing") + " does not exist"},
                {'"' + data + '"', data + " is not executable"},
                {"\"/50%1\"", "/50%1 does not exist"},
                {"", " does not exist"},
                {"1", " does not exist"}};
    for (const auto &row : rows) {
        scripted_lmlib64::loadDefaultScript();
        if (row.nodeJson.isEmpty()) {
            lmLibErase(nullptr, viewerNode);
        } else {
            scripted_lmlib64::setNode(viewerNode, row.nodeJson.toStdString());
        }
        const MainWindow window;
        QString text;
        driven_window::whenOpened<QMessageBox>([&](QMessageBox *box) {
            text = box->text();
            EXPECT_EQ(box->windowTitle(), "Error");
            EXPECT_EQ(box->icon(), QMessageBox::Warning);
            EXPECT_EQ(box->standardButtons(), QMessageBox::Ok);
            EXPECT_EQ(box->parent(), nullptr);
            box->accept();
        });
        find<QPushButton>(window, "calibrateBtn")->click();
        EXPECT_EQ(text, row.message);
    }
}

}  // namespace
