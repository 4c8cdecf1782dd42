// The window over the real library: every page gives a picture, and what is saved can be read back.
#include <QAbstractButton>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGraphicsPixmapItem>
#include <QGraphicsView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>
#include <set>

#include "generator/main_window.h"
#include "tests/generator/driven_window.h"

using driven_window::find;

namespace {

void setPage(const MainWindow &window, int page) {
    find<QTabWidget>(window, "patternType")->setCurrentIndex(page);
}

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

QByteArray contentOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// "name value" lines of what poppler says of a PDF file.
QString pdfInfo(const QString &path) {
    QProcess process;
    process.start("pdfinfo", {path});
    process.waitForFinished();
    return QString::fromLocal8Bit(process.readAllStandardOutput()).simplified();
}

}  // namespace

class WholeProgramTest : public QObject {
    Q_OBJECT

private slots:
    void everyPageGivesAPicture();
    void pictureFollowsTheInputs();
    void patternWithoutExtentIsAnEmptyPicture();
    void everyPlateOfTheCatalogueIsDrawn();
    void savesEveryPage_data();
    void savesEveryPage();
    void refusedFileIsReported();
    void viewerIsNamedThatDoesNotExistYet();
};

void WholeProgramTest::everyPageGivesAPicture() {
    const MainWindow window;
    std::set<QByteArray> different;
    for (const int page : {0, 1, 2, 3, 4}) {
        setPage(window, page);
        const QImage image = picture(window);
        QCOMPARE(image.size(), QSize(2000, 2000));
        const double share = darkShare(image);
        QVERIFY2(share > 0.2 && share < 0.8, qPrintable(QString("page %1: %2").arg(page).arg(share)));
        different.insert(
            QByteArray(reinterpret_cast<const char *>(image.constBits()), static_cast<int>(image.sizeInBytes())));
    }
    // Of the checkerboards of 15 x 15 some may be equal; the plate with round marks is another picture.
    QVERIFY(different.size() > 1);
}

void WholeProgramTest::pictureFollowsTheInputs() {
    const MainWindow window;
    setPage(window, 2);
    find<QSpinBox>(window, "flexibleWidth")->setValue(31);
    QCOMPARE(picture(window).width(), 2000);
    QVERIFY(picture(window).height() > 900 && picture(window).height() < 1200);

    const double dark = darkShare(picture(window));
    // Beside a corner, where no mark reaches.
    const QRgb before = picture(window).pixel(picture(window).rect().center() + QPoint(10, 10));
    find<QAbstractButton>(window, "flexiblePolarity")->click();
    const QRgb after = picture(window).pixel(picture(window).rect().center() + QPoint(10, 10));
    QVERIFY(qAbs(qRed(before) - qRed(after)) > 200);
    QVERIFY(qAbs(dark - darkShare(picture(window))) < 0.05);
}

void WholeProgramTest::patternWithoutExtentIsAnEmptyPicture() {
    const MainWindow window;
    setPage(window, 2);
    find<QDoubleSpinBox>(window, "flexibleGridSpacing")->setValue(0);
    QVERIFY(picture(window).isNull());
    find<QDoubleSpinBox>(window, "flexibleGridSpacing")->setValue(4);
    QVERIFY(!picture(window).isNull());
}

void WholeProgramTest::everyPlateOfTheCatalogueIsDrawn() {
    const MainWindow window;
    auto *plates = find<QComboBox>(window, "officialPattern");
    QVERIFY(plates->count() >= 8);
    for (int i = 0; i < plates->count(); ++i) {
        plates->setCurrentIndex(i);
        QVERIFY2(!picture(window).isNull(), qPrintable(plates->itemText(i)));
    }
}

void WholeProgramTest::savesEveryPage_data() {
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("patternCount");
    QTest::addColumn<double>("gridSpacing");
    QTest::newRow("official") << 0 << 1 << 96.0;
    QTest::newRow("single") << 1 << 1 << 12.0;
    QTest::newRow("flexible") << 2 << 1 << 12.5;
    QTest::newRow("assembly") << 3 << 5 << 12.0;
    QTest::newRow("halcon") << 4 << 1 << 12.5;
}

void WholeProgramTest::savesEveryPage() {
    QFETCH(int, page);
    QFETCH(int, patternCount);
    QFETCH(double, gridSpacing);
    const QTemporaryDir folder;
    const MainWindow window;
    setPage(window, page);

    save(window, folder.filePath("target"));
    QVERIFY(contentOf(folder.filePath("target.pdf")).startsWith("%PDF-"));
    QVERIFY2(pdfInfo(folder.filePath("target.pdf")).contains(QString("Pages: %1 ").arg(patternCount)),
             qPrintable(pdfInfo(folder.filePath("target.pdf"))));

    save(window, folder.filePath("target.json"));
    const QJsonArray patterns =
        QJsonDocument::fromJson(contentOf(folder.filePath("target.json"))).object().value("Patterns").toArray();
    QCOMPARE(patterns.size(), patternCount);
    for (int i = 0; i < patternCount; ++i) {
        const QJsonObject parameters = patterns[i].toObject().value("Parameters").toObject();
        QCOMPARE(parameters.value("GridSpacing").toDouble(), gridSpacing);
        QCOMPARE(parameters.value("AssemblyPattern").toInt(-1), page == 3 ? i : -1);
    }
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList({"target.json", "target.pdf"}));
}

void WholeProgramTest::refusedFileIsReported() {
    const QTemporaryDir folder;
    const MainWindow window;
    const auto message = driven_window::closeNextMessageBox();
    save(window, folder.filePath("target.old"));
    QVERIFY2(
        message->startsWith("An LmLib error occurred while executing the command:\nGenerateCalibrationPattern: \n"),
        qPrintable(*message));
    QVERIFY2(message->contains("target.old"), qPrintable(*message));
    QVERIFY(QDir(folder.path()).isEmpty());
}

void WholeProgramTest::viewerIsNamedThatDoesNotExistYet() {
    const MainWindow window;
    const auto message = driven_window::closeNextMessageBox();
    find<QAbstractButton>(window, "calibrateBtn")->click();
    QVERIFY2(message->endsWith("/LmView does not exist"), qPrintable(*message));
}

QTEST_MAIN(WholeProgramTest)
#include "whole_program_test.moc"
