// The window with the real library: every page shows a picture, and the saved files can be read back.
#include <gtest/gtest.h>

#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"
#include "tests/value_printing.h"

using driven_window::find;
using driven_window::setInput;

namespace {

QImage picture(const MainWindow &window) {
    const auto items = find<QGraphicsView>(window, "preview")->scene()->items();
    auto *item = items.size() == 1 ? qgraphicsitem_cast<QGraphicsPixmapItem *>(items.first()) : nullptr;
    return item == nullptr ? QImage() : item->pixmap().toImage();
}

// The share of the picture that is darker than medium grey.
double darkShare(const QImage &image) {
    qint64 dark = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            dark += qRed(image.pixel(x, y)) < 128 ? 1 : 0;
        }
    }
    return static_cast<double>(dark) / (static_cast<double>(image.width()) * image.height());
}

void save(const MainWindow &window, const QString &fileName) {
    driven_window::answerFileDialog(fileName);
    find<QAbstractButton>(window, "saveBtn")->click();
}

// The output of poppler's pdfinfo for a file.
QString pdfInfo(const QString &path) {
    QProcess process;
    process.start("pdfinfo", {path});
    process.waitForFinished();
    return QString::fromLocal8Bit(process.readAllStandardOutput()).simplified();
}

TEST(WholeProgram, drawsAndSavesEveryPage) {
    const struct {
        int patternCount;
        double gridSpacing;
    } pages[] = {{1, 96.0}, {1, 12.0}, {1, 12.5}, {5, 12.0}, {1, 12.5}};
    const MainWindow window;
    for (int page = 0; page < 5; ++page) {
        SCOPED_TRACE(page);
        setInput(window, "patternType", page);
        EXPECT_EQ(picture(window).size(), QSize(2000, 2000));
        const double share = darkShare(picture(window));
        EXPECT_TRUE(share > 0.2 && share < 0.8) << share;

        const QTemporaryDir folder;
        save(window, folder.filePath("target"));
        save(window, folder.filePath("target.json"));
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
                  (QStringList{"target.json", "target.pdf"}));
        EXPECT_TRUE(
            pdfInfo(folder.filePath("target.pdf")).contains(QString("Pages: %1 ").arg(pages[page].patternCount)));
        QFile json(folder.filePath("target.json"));
        ASSERT_TRUE(json.open(QIODevice::ReadOnly));
        const QJsonArray patterns = QJsonDocument::fromJson(json.readAll()).object().value("Patterns").toArray();
        EXPECT_EQ(patterns.size(), pages[page].patternCount);
        for (int i = 0; i < patterns.size(); ++i) {
            const QJsonObject parameters = patterns[i].toObject().value("Parameters").toObject();
            EXPECT_EQ(parameters.value("GridSpacing").toDouble(), pages[page].gridSpacing);
            EXPECT_EQ(parameters.value("AssemblyPattern").toInt(-1), page == 3 ? i : -1);
        }
    }
}

TEST(WholeProgram, pictureFollowsTheInputs) {
    const MainWindow window;
    setInput(window, "patternType", 2);
    setInput(window, "flexibleWidth", 31);
    EXPECT_EQ(picture(window).width(), 2000);
    EXPECT_NEAR(picture(window).height(), 1050, 150);

    const double dark = darkShare(picture(window));
    // Beside a corner, where no mark reaches.
    const QPoint place = picture(window).rect().center() + QPoint(10, 10);
    const QRgb before = picture(window).pixel(place);
    setInput(window, "flexiblePolarity", 0);
    EXPECT_GT(qAbs(qRed(before) - qRed(picture(window).pixel(place))), 200);
    EXPECT_NEAR(darkShare(picture(window)), dark, 0.05);

    setInput(window, "flexibleGridSpacing", 0);
    EXPECT_TRUE(picture(window).isNull());
    setInput(window, "flexibleGridSpacing", 4);
    EXPECT_FALSE(picture(window).isNull());
}

TEST(WholeProgram, drawsEveryPlateOfTheCatalogue) {
    const MainWindow window;
    const auto *plates = find<QComboBox>(window, "officialPattern");
    EXPECT_GE(plates->count(), 8);
    for (int i = 0; i < plates->count(); ++i) {
        setInput(window, "officialPattern", i);
        EXPECT_FALSE(picture(window).isNull()) << plates->itemText(i).toStdString();
    }
}

TEST(WholeProgram, reportsARefusedFileAndAMissingViewer) {
    const QTemporaryDir folder;
    const MainWindow window;
    auto message = driven_window::closeNextMessageBox();
    save(window, folder.filePath("target.old"));
    EXPECT_TRUE(
        message->startsWith("An LmLib error occurred while executing the command:\nGenerateCalibrationPattern: \n"))
        << message->toStdString();
    EXPECT_TRUE(message->contains("target.old")) << message->toStdString();
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
    message = driven_window::closeNextMessageBox();
    find<QAbstractButton>(window, "calibrateBtn")->click();
    EXPECT_TRUE(message->endsWith("/LmView does not exist")) << message->toStdString();
}

}  // namespace
