// Tests the whole window and all its views with the example's photographs, from dropping them to the written files.
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListView>
#include <QProcess>
#include <QPushButton>
#include <QSysInfo>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QtMath>
#include <QtTest>
#include <opencv2/videoio.hpp>
#include <set>

#include "bench/viewer/file_drop.h"
#include "tests/viewer/bad_photographs.h"
#include "tests/viewer/example_truth.h"
#include "viewer/axes_panel.h"
#include "viewer/live_panel.h"
#include "viewer/photograph_list.h"
#include "viewer/settings_panel.h"
#include "viewer/viewer_window.h"
#include "viewer/views/patterns_view.h"
#include "viewer/views/photograph_view.h"
#include "viewer/views/residual_view.h"

namespace {

const QString exampleFolder = QStringLiteral(VIEWER_EXAMPLE);

QString examplePhotograph(int number) {
    return QString("%1/photograph-%2.jpg").arg(exampleFolder).arg(number, 2, 10, QChar('0'));
}

QString problemOf(const QListView &list, const QString &fileName) {
    for (int row = 0; row < list.model()->rowCount(); ++row) {
        const QModelIndex index = list.model()->index(row, 0);
        if (index.data().toString() == fileName) {
            return index.data(PhotographListModel::ProblemRole).toString();
        }
    }
    return "not in the list";
}

QByteArray contentsOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Returns the places of a pattern's corners in the written assembly, by column and row.
QMap<QPair<int, int>, Eigen::Vector3d> placesIn(const QString &assemblyFile, int pattern) {
    QMap<QPair<int, int>, Eigen::Vector3d> places;
    const QJsonArray patterns = QJsonDocument::fromJson(contentsOf(assemblyFile)).object()["Patterns"].toArray();
    for (const QJsonValue &one : patterns) {
        const QJsonArray points = one["Number"].toInt() == pattern ? one["Points"].toArray() : QJsonArray();
        for (const QJsonValue &point : points) {
            const QJsonArray row = point.toArray();
            places.insert({row[0].toInt(), row[1].toInt()},
                          Eigen::Vector3d(row[2].toDouble(), row[3].toDouble(), row[4].toDouble()));
        }
    }
    return places;
}

// Returns the smallest rectangle that contains everything that is not white.
QRect inkIn(const QImage &picture) {
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qGray(picture.pixel(x, y)) < 250) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

// Counts the colours in a picture of the widget. There are only a few if nothing is drawn.
int coloursIn(QWidget &widget) {
    const QImage picture = widget.grab().toImage();
    std::set<QRgb> colours;
    for (int y = 0; y < picture.height(); y += 3) {
        for (int x = 0; x < picture.width(); x += 3) {
            colours.insert(picture.pixel(x, y));
        }
    }
    return int(colours.size());
}

}  // namespace

class ViewerWindowTest : public QObject {
    Q_OBJECT

private slots:
    void leadsFromADropToTheAssembly();
    void namesBadPhotographsAndIsNotSpoiledByThem();
    void opensPhotographsFromResiduals();
    void writesTheAssemblyInTheAxesOfThreeClickedCorners();
    void keepsACopyWhileChangesFollowEachOther();
    void showsPlacesInTheChosenAxes();
    void takesPicturesOfAVideo();

private:
    // Fixes the lens model, and treats no print as bent. Otherwise, the calibration would choose the lens model and the
    // bends, and this choice would take most of the test's time. The calibration's own tests cover it.
    static void useFixedModels(ViewerWindow &window) {
        SessionSettings settings;
        settings.arrangement = Arrangement::Assembly;
        settings.lens = calibration::LensModel::Pinhole5;
        settings.mayBend = false;
        emit window.findChild<SettingsPanel *>()->edited(settings);
    }
    // Waits until there is a result with a calibration.
    static bool isCalibrated(ViewerWindow &window) {
        const auto *text = window.findChild<QTextBrowser *>();
        return QTest::qWaitFor([text] { return text->toPlainText().contains("fx"); }, 200000);
    }
};

void ViewerWindowTest::leadsFromADropToTheAssembly() {
    ViewerWindow window{QString()};
    useFixedModels(window);
    window.show();
    drop(window, {exampleFolder});
    QVERIFY(isCalibrated(window));
    auto *list = window.findChild<QListView *>("photographs");
    QCOMPARE(list->model()->rowCount(), 12);
    for (int row = 0; row < 12; ++row) {
        const QModelIndex index = list->model()->index(row, 0);
        QCOMPARE(index.data(PhotographListModel::ProblemRole).toString(), QString());
        QVERIFY2(index.data(PhotographListModel::FitRole).toString().contains("px"),
                 qPrintable(index.data(PhotographListModel::FitRole).toString()));
    }
    auto *tabs = window.findChild<QTabWidget *>("views");
    for (int tab = 0; tab < tabs->count(); ++tab) {
        tabs->setCurrentIndex(tab);
        QCoreApplication::processEvents();
        QVERIFY2(coloursIn(*tabs->currentWidget()) > 10, qPrintable(tabs->tabText(tab)));
    }
    QCOMPARE(window.findChild<PatternsView *>()->findChild<QTableWidget *>()->rowCount(), 5);

    const QTemporaryDir results;
    QCOMPARE(window.writeResultsTo(results.path()), QString());
    const auto error = greatestCornerError(results.filePath("assembly.json"));
    QVERIFY(error.has_value());
    QVERIFY2(*error < 0.05, qPrintable(QString("%1 mm").arg(*error)));
    QVERIFY(QFile::exists(results.filePath("calibration.json")));

    const QString pdf = results.filePath("report.pdf");
    QCOMPARE(window.writeReportTo(pdf), QString());
    QVERIFY(!window.writeReportTo(results.filePath("no/such/folder.pdf")).isEmpty());
    QCOMPARE(window.writeReportTo(results.filePath("report.html")), QString());
    QCOMPARE(contentsOf(results.filePath("report.html")).count("data:image/jpeg;base64,"), 12);
    if (QSysInfo::kernelType() == "winnt") {
        return;  // only on Linux, the test has the programs that read the PDF
    }

    // The PDF has the texts of every part of the report, and the texts inside the figures.
    QProcess reader;
    reader.start("pdftotext", {"-layout", pdf, "-"});
    QVERIFY(reader.waitForFinished());
    const QString text = QString::fromUtf8(reader.readAllStandardOutput()).simplified();
    const QString verdict = window.findChild<QTextBrowser *>()->toPlainText().simplified().section('.', 0, 0);
    for (const char *part : {"Camera calibration", "Residual of each photograph", "photograph-12.jpg", "of 12",
                             "Field of view", "How to read this", "if lengths matter", "The next photograph", "px"}) {
        QVERIFY2(text.contains(part), part);
    }
    QVERIFY(text.contains(verdict));

    // Every page is A4, and everything is within its margins.
    QProcess painter;
    painter.setWorkingDirectory(results.path());
    painter.start("pdftoppm", {"-r", "25.4", "-gray", pdf, "page"});
    QVERIFY(painter.waitForFinished());
    const QStringList pages = QDir(results.path()).entryList({"page-*.pgm"});
    QVERIFY(pages.size() >= 3);
    for (const QString &page : pages) {
        const QImage picture(results.filePath(page));
        QVERIFY(qAbs(picture.width() - 210) <= 1 && qAbs(picture.height() - 297) <= 1);  // one pixel per millimetre
        const QRect ink = inkIn(picture);
        QVERIFY2(picture.rect().adjusted(15, 15, -15, -15).contains(ink) && ink.width() > 100, qPrintable(page));
    }
}

void ViewerWindowTest::namesBadPhotographsAndIsNotSpoiledByThem() {
    const QTemporaryDir folder;
    const QStringList badNames = writeBadPhotographs(folder.path(), examplePhotograph(1));
    QCOMPARE(badNames.size(), 3);

    ViewerWindow window{QString()};
    useFixedModels(window);
    window.show();
    drop(window, {exampleFolder, folder.path()});
    QVERIFY(isCalibrated(window));
    const auto *list = window.findChild<QListView *>("photographs");
    for (const QString &name : badNames) {
        const QString problem = problemOf(*list, name);
        QVERIFY2(problem.contains(' ') && problem != "not in the list", qPrintable(name + ": " + problem));
    }
    const QTemporaryDir results;
    QCOMPARE(window.writeResultsTo(results.path()), QString());
    const auto error = greatestCornerError(results.filePath("assembly.json"));
    QVERIFY(error.has_value());
    QVERIFY2(*error < 0.05, qPrintable(QString("%1 mm").arg(*error)));

    // The photographs that are of no use at all are also named in the files.
    QCOMPARE(window.writeReportTo(results.filePath("report.html")), QString());
    for (const char *file : {"report.html", "calibration.json"}) {
        const QByteArray contents = contentsOf(results.filePath(file));
        QVERIFY2(contents.contains("blurred.jpg") && contents.contains("smaller.jpg"), file);
    }
}

void ViewerWindowTest::opensPhotographsFromResiduals() {
    ViewerWindow window{QString()};
    useFixedModels(window);
    window.show();
    window.open({exampleFolder});
    QVERIFY(isCalibrated(window));
    auto *tabs = window.findChild<QTabWidget *>("views");
    tabs->setCurrentIndex(2);
    auto *residuals = window.findChild<ResidualView *>();
    const auto *list = window.findChild<QListView *>("photographs");
    const auto *picture = window.findChild<PhotographView *>();
    const int last = list->model()->index(11, 0).data(PhotographListModel::IdRole).toInt();
    emit residuals->photographChosen(last);
    QCOMPARE(picture->photographId(), last);
    QCOMPARE(list->currentIndex().row(), 11);

    // The points are dense in the middle of the scatter plot, so a click there hits one.
    list->selectionModel()->clear();
    QSignalSpy chosen(residuals, &ResidualView::cornerChosen);
    QWidget *canvas = residuals->findChildren<QWidget *>("QwtPlotCanvas").first();
    QTest::mouseClick(canvas, Qt::LeftButton, {}, canvas->rect().center());
    QCOMPARE(chosen.count(), 1);
    QCOMPARE(picture->photographId(), chosen[0][0].toInt());
}

void ViewerWindowTest::writesTheAssemblyInTheAxesOfThreeClickedCorners() {
    ViewerWindow window{QString()};
    useFixedModels(window);
    window.show();
    window.open({exampleFolder});
    QVERIFY(isCalibrated(window));
    auto *pick = window.findChild<QPushButton *>("pickCorners");
    QVERIFY2(pick->isVisible() && pick->isEnabled(), "the button for picking corners cannot be clicked");
    auto *picture = window.findChild<PhotographView *>();
    QTRY_VERIFY(coloursIn(*picture) > 50);  // the photograph is loaded

    // Three corners of pattern 1, which the reader calls tile 2. In the written assembly, columns and rows are counted
    // from 0, so they are one less than these lattice coordinates.
    const cv::Point lattice[] = {{4, 3}, {12, 3}, {4, 11}};
    QImage photograph(examplePhotograph(1));
    const double scale =
        qMin(double(picture->width()) / photograph.width(), double(picture->height()) / photograph.height());
    const QPointF origin =
        QPointF(picture->width() - scale * photograph.width(), picture->height() - scale * photograph.height()) / 2;
    QImage grey = photograph.convertToFormat(QImage::Format_Grayscale8);
    const auto readings = pattern_reader::readPatterns(
        cv::Mat(grey.height(), grey.width(), CV_8U, grey.bits(), size_t(grey.bytesPerLine())));
    pick->click();
    for (const cv::Point &wanted : lattice) {
        for (const auto &reading : readings) {
            for (const auto &corner : reading.corners) {
                if (reading.tile == 2 && corner.lattice == wanted) {
                    const QPointF at(double(corner.image.x) + 0.5, double(corner.image.y) + 0.5);
                    QTest::mouseClick(picture, Qt::LeftButton, {}, (origin + scale * at).toPoint());
                }
            }
        }
    }
    QVERIFY(!pick->isChecked());
    const QTemporaryDir results;
    QVERIFY(isCalibrated(window));
    QCOMPARE(window.writeResultsTo(results.path()), QString());
    const auto places = placesIn(results.filePath("assembly.json"), 1);
    const double length = 8 * example_assembly::gridSpacing / 2;
    const Eigen::Vector3d expected[] = {{0, 0, 0}, {length, 0, 0}, {0, length, 0}};
    for (int i = 0; i < 3; ++i) {
        const Eigen::Vector3d found = places.value({lattice[i].x - 1, lattice[i].y - 1}, Eigen::Vector3d(-1, -1, -1));
        QVERIFY2((found - expected[i]).norm() < 0.05, qPrintable(QString("%1").arg((found - expected[i]).norm())));
    }

    // Another choice: the axes of pattern 2.
    auto *reference = window.findChild<AxesPanel *>()->findChild<QComboBox *>();
    QCOMPARE(reference->currentText(), QString("three corners"));
    reference->setCurrentIndex(reference->findText("pattern 2"));
    emit reference->activated(reference->currentIndex());
    QCOMPARE(window.writeResultsTo(results.path()), QString());
    const auto ownPlaces = placesIn(results.filePath("assembly.json"), 2);
    const Eigen::Vector3d start = ownPlaces.value({3, 4}, Eigen::Vector3d(-1, -1, -1));
    QVERIFY((ownPlaces.value({11, 4}) - start - Eigen::Vector3d(length, 0, 0)).norm() < 0.05);
    QVERIFY((ownPlaces.value({3, 12}) - start - Eigen::Vector3d(0, length, 0)).norm() < 0.05);
}

// A copy of the session, for use after a crash, is written a short time after a change. Further changes during
// this time must not delay the copy.
void ViewerWindowTest::keepsACopyWhileChangesFollowEachOther() {
    const QTemporaryDir folder;
    const auto copies = [&folder] { return QDir(folder.path()).entryList({"*.json"}); };
    {
        ViewerWindow window{folder.path()};
        SessionSettings settings;
        for (int i = 0; i < 200 && copies().isEmpty(); ++i) {
            settings.gridSpacing = 10 + i;
            emit window.findChild<SettingsPanel *>()->edited(settings);
            QTest::qWait(20);
        }
        QCOMPARE(copies().size(), 1);
        window.close();
    }
    QVERIFY2(copies().isEmpty(), "closing the window did not remove the copy of the session");
}

void ViewerWindowTest::showsPlacesInTheChosenAxes() {
    ViewerWindow window{QString()};
    useFixedModels(window);
    window.show();
    window.open({exampleFolder});
    QVERIFY(isCalibrated(window));
    window.findChild<QTabWidget *>("views")->setCurrentWidget(window.findChild<PatternsView *>());
    const auto *table = window.findChild<PatternsView *>()->findChild<QTableWidget *>();
    const auto placeOf = [table](int row) {
        Eigen::Vector3d place;
        for (const int axis : {0, 1, 2}) {
            place[axis] = table->item(row, 2 + axis)->text().section(QChar(0xa0), 0, 0).toDouble();
        }
        return place;
    };
    const double distance = placeOf(2).norm();
    QCOMPARE(placeOf(0), Eigen::Vector3d(0, 0, 0));
    QVERIFY(distance > 100);
    const Eigen::Vector3d rotation(example_assembly::worldFromPattern[1].rotation.data());
    const double turn = table->item(1, 5)->text().section(QChar(0xa0), 0, 0).toDouble();
    QVERIFY2(qAbs(turn - qRadiansToDegrees(rotation.norm())) < 0.05, qPrintable(QString::number(turn)));
    SessionSettings settings;
    settings.arrangement = Arrangement::Assembly;
    settings.lens = calibration::LensModel::Pinhole5;
    settings.mayBend = false;
    settings.reference = 2;
    emit window.findChild<SettingsPanel *>()->edited(settings);
    QTRY_VERIFY(placeOf(2).norm() < 0.01);
    QVERIFY(qAbs(placeOf(0).norm() - distance) < 0.01);

    // In the last column, the user enters the lengths of a print's two check bars, measured with a caliper. The bars
    // are drawn 100 mm long. A length that differs from this by 10 mm or more is refused.
    connect(window.findChild<PatternsView *>(), &PatternsView::settingsEdited, this,
            [&settings](const SessionSettings &edited) { settings = edited; });
    const std::pair<QString, QPointF> entries[] = {{"99.7 x 100.1", {0.997, 1.001}},
                                                   {"99.7 mm X 100.1 mm", {0.997, 1.001}},
                                                   {"99.5", {0.995, 0.995}},
                                                   {"50 x 100", {}},
                                                   {"", {}}};
    for (const auto &[entered, measured] : entries) {
        table->item(1, table->columnCount() - 1)->setText(entered);
        QVERIFY2(settings.measured.value(1) == measured, qPrintable(entered));
    }
}

void ViewerWindowTest::takesPicturesOfAVideo() {
    const QTemporaryDir folder;
    const QString file = folder.filePath("target.avi");
    {
        cv::VideoWriter video(file.toStdString(), cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25,
                              {1440, 1080});
        QVERIFY(video.isOpened());
        for (const int number : {1, 5}) {
            QImage picture = QImage(examplePhotograph(number)).convertToFormat(QImage::Format_BGR888);
            const cv::Mat frame(picture.height(), picture.width(), CV_8UC3, picture.bits(),
                                size_t(picture.bytesPerLine()));
            for (int i = 0; i < 8; ++i) {
                video.write(frame);
            }
        }
    }
    ViewerWindow window{QString()};
    window.show();
    auto *live = window.findChild<LivePanel *>();
    live->suggestFolder(folder.filePath("kept"));
    window.open({file});
    QVERIFY(live->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!live->isRunning(), 60000);
    QVERIFY2(live->statusText().contains("ended") && live->statusText().contains("2"), qPrintable(live->statusText()));
    QTRY_COMPARE(window.findChild<QListView *>("photographs")->model()->rowCount(), 2);
    QVERIFY(QFile::exists(folder.filePath("kept/picture-0002.png")));
}

QTEST_MAIN(ViewerWindowTest)
#include "viewer_window_test.moc"
