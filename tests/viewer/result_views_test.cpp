// Measures what the tabs show of a result whose numbers are known.
#include <qwt_plot.h>

#include <QComboBox>
#include <QLabel>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTextBrowser>
#include <QtTest>

#include "tests/viewer/drawn_marks.h"
#include "tests/viewer/known_result.h"
#include "viewer/views/coverage_view.h"
#include "viewer/views/live_view.h"
#include "viewer/views/next_photograph_view.h"
#include "viewer/views/residual_view.h"
#include "viewer/views/scene_view.h"
#include "viewer/views/summary_view.h"
#include "viewer/views/uncertainty_view.h"

namespace {

using known_result::Builder;
using known_result::Corner;
using known_result::firstId;

// Shows a result in a view that is as large as a tab.
template <typename View>
void show(View &view, const std::shared_ptr<const SessionResult> &result) {
    view.setResult(result);
    view.resize(600, 600);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QCoreApplication::processEvents();
}

QString summaryOf(const QWidget &view) {
    return view.findChild<QLabel *>()->text().replace(QChar(0xa0), ' ');
}

// Returns the colour at a place of the plot. The place is in the coordinates of the plot's axes.
QColor colourAt(QwtPlot &plot, QPointF place) {
    const QImage canvas = plot.canvas()->grab().toImage();
    return canvas.pixelColor(qRound(plot.transform(QwtPlot::xBottom, place.x())),
                             qRound(plot.transform(QwtPlot::yLeft, place.y())));
}

bool isBlue(const QColor &colour) {
    return colour.blue() > colour.red() + 80;
}

bool isRed(const QColor &colour) {
    return colour.red() > colour.blue() + 80;
}

void choose(QWidget &view, const char *name, int index) {
    for (QComboBox *box : view.findChildren<QComboBox *>()) {
        if (box->accessibleName() == name) {
            box->setCurrentIndex(index);
        }
    }
    QCoreApplication::processEvents();
}

calibration::PictureMap mapOf(std::vector<std::optional<double>> values) {
    return {4, 2, std::move(values)};
}

}  // namespace

class ResultViewsTest : public QObject {
    Q_OBJECT

private slots:
    void showsTheCornersOfTheChosenCamera();
    void showsResidualsAndOpensTheirPhotographs();
    void showsTheChosenUncertaintyInTheRightCells();
    void summarisesTheResult();
    void saysWhyThereIsNoResult();
    void drawsTheNextPhotograph();
    void marksTheCornersOfALiveFrame();
    void drawsPrintsAndCamerasInTheirPlaces();
    void turnsTheSceneWithTheMouse();
};

void ResultViewsTest::showsTheCornersOfTheChosenCamera() {
    Builder known;
    std::vector<Corner> left;
    std::vector<Corner> right;
    for (int column = 0; column < 6; ++column) {  // the coverage is counted in 12 x 9 cells of the picture
        for (int row = 0; row < 9; ++row) {
            left.push_back({{50 + 100.0 * column, 50 + 100.0 * row}, {0, 0}});
            right.push_back({{650 + 100.0 * column, 50 + 100.0 * row}, {0, 0}});
        }
    }
    right.resize(20);
    known.add(0, 0, true, left);
    known.add(1, 0, true, {left[0]});
    known.add(2, 0, false, right);
    known.add(3, 0, true, {{{700, 500}, {0, 0}}, {{100, 100}, {0, 0}}});
    CoverageView view;
    show(view, known.make());
    QVERIFY2(summaryOf(view).startsWith("55 corners, in 50 %"), qPrintable(summaryOf(view)));
    auto *plot = view.findChild<QwtPlot *>();
    QVERIFY(isBlue(colourAt(*plot, {50, 50})) && isBlue(colourAt(*plot, {550, 850})));
    QVERIFY(isRed(colourAt(*plot, {650, 850})));
    QVERIFY(plot->transform(QwtPlot::xBottom, 0) < plot->transform(QwtPlot::xBottom, 1200));
    QVERIFY2(plot->transform(QwtPlot::yLeft, 0) < plot->transform(QwtPlot::yLeft, 900), "y does not point down");
    choose(view, "Camera", 1);
    QVERIFY2(summaryOf(view).startsWith("2 corners, in 2 %"), qPrintable(summaryOf(view)));
    QVERIFY(isBlue(colourAt(*plot, {700, 500})));
}

void ResultViewsTest::showsResidualsAndOpensTheirPhotographs() {
    Builder known;
    known.add(0, 0, true, {{{150, 250}, {0.3, 0.4}}});
    known.add(1, 0, false, {{{550, 250}, {-0.6, 0.8}}});
    known.add(2, 0, true, {{{350, 650}, {0, -0.5}}});
    known.add(3, 0, true, {{{99, 98}, {0.5, 0}}});
    known.calibration->cameras[0].rms = known.calibration->cameras[1].rms = 0.5;
    known.result.fits[firstId].rms = known.result.fits[firstId + 2].rms = 0.5;
    known.result.fits[firstId + 1].rms = 0.25;
    known.result.fits[firstId + 3].rms = 0.5;
    ResidualView view;
    show(view, known.make());
    QVERIFY2(summaryOf(view).startsWith("0.500 px rms"), qPrintable(summaryOf(view)));

    const QList<QwtPlot *> plots = view.findChildren<QwtPlot *>();
    QWidget *scatter = plots[0]->canvas();
    QWidget *bars = plots[1]->canvas();
    // Residuals of 0 are in the middle, x points to the right and y down, and both have the same scale.
    const double unit = plots[0]->transform(QwtPlot::xBottom, 1) - plots[0]->transform(QwtPlot::xBottom, 0);
    const auto place = [&](double x, double y) {
        return (QRectF(scatter->rect()).center() + unit * QPointF(x, y)).toPoint();
    };
    const QImage drawn = scatter->grab().toImage();
    QVERIFY2(drawn.rect().contains(place(2.4, 2.4)) && drawn.rect().contains(place(-2.4, -2.4)), "points are cut off");
    QVERIFY(isBlue(drawn.pixelColor(place(0.3, 0.4))) && isBlue(drawn.pixelColor(place(0, -0.5))));
    QVERIFY(isRed(drawn.pixelColor(place(-0.6, 0.8))));

    QSignalSpy corners(&view, &ResidualView::cornerChosen);
    QTest::mouseClick(scatter, Qt::LeftButton, {}, place(0, -0.5));
    QCOMPARE(corners.value(0), (QVariantList{firstId + 2, QPointF(350, 650)}));
    QTest::mouseClick(scatter, Qt::LeftButton, {}, place(0.6, -0.8));
    QCOMPARE(corners.size(), 1);  // no point is there

    // The three photographs of the first camera have a bar each, as high as their residuals.
    const auto barHeight = [bars](double x) {
        const QImage picture = bars->grab().toImage();
        int height = 0;
        for (int y = 0; y < picture.height(); ++y) {
            height += isBlue(picture.pixelColor(int(x * picture.width()), y)) ? 1 : 0;
        }
        return height;
    };
    QVERIFY(barHeight(0.5 / 3) > 20);
    QVERIFY(qAbs(barHeight(0.5 / 3) - barHeight(2.5 / 3)) <= 1);
    QVERIFY(qAbs(barHeight(0.5 / 3) - 2 * barHeight(1.5 / 3)) <= 2);
    QSignalSpy photographs(&view, &ResidualView::photographChosen);
    for (const double x : {0.1, 0.3, 0.4, 0.6, 0.7, 0.9}) {
        QTest::mouseClick(bars, Qt::LeftButton, {}, {int(x * bars->width()), bars->height() / 2});
        QCOMPARE(photographs.takeFirst()[0].toInt(), firstId + int(3 * x));
    }
    choose(view, "Camera", 1);
    QTest::mouseClick(bars, Qt::LeftButton, {}, {bars->width() / 10, bars->height() / 2});
    QCOMPARE(photographs.takeFirst()[0].toInt(), firstId + 3);
}

void ResultViewsTest::showsTheChosenUncertaintyInTheRightCells() {
    Builder known;
    calibration::CameraTrust &trust = known.calibration->cameras[0];
    trust.distance = 530;
    trust.uncertainty = mapOf({0.5, 0.02, 0.02, 0.02, 0.02, 0.02, 0.02, 0.25});
    trust.uncertaintyAtInfinity = mapOf({0.02, 0.02, 0.02, 0.02, 0.02, 1.5, 0.02, 0.02});
    trust.halves = mapOf({0.004, 0.004, 0.004, 0.004, 0.008, 0.004, 0.004, 0.004});
    known.calibration->cameras[1].uncertainty = mapOf(std::vector<std::optional<double>>(8, 0.1));
    UncertaintyView view;
    show(view, known.make());
    // Returns the middle of the darkest cell.
    const auto darkest = [&view] {
        auto *plot = view.findChild<QwtPlot *>();
        QPoint best;
        for (int column = 0; column < 4; ++column) {
            for (int row = 0; row < 2; ++row) {
                const auto lightness = [&](int x, int y) {
                    return colourAt(*plot, {150 + 300.0 * x, 225 + 450.0 * y}).lightness();
                };
                best = lightness(column, row) < lightness(best.x(), best.y()) ? QPoint(column, row) : best;
            }
        }
        return best;
    };
    const struct {
        const char *said;
        QPoint darkest;
    } quantities[] = {{"at a distance of 530 mm is projected; at most 0.500 px", {0, 0}},
                      {"far away is projected; at most 1.50 px", {1, 1}},
                      {"one half of the photographs; at most 0.0080 px", {0, 1}}};
    for (int i = 0; i < 3; ++i) {
        choose(view, "Quantity", i);
        QVERIFY2(summaryOf(view).contains(quantities[i].said), qPrintable(summaryOf(view)));
        QCOMPARE(darkest(), quantities[i].darkest);
    }
    choose(view, "Camera", 1);
    QVERIFY2(summaryOf(view).contains("halves cannot be compared"), qPrintable(summaryOf(view)));
    QVERIFY(!view.findChild<QwtPlot *>()->isVisible());
}

void ResultViewsTest::summarisesTheResult() {
    Builder known;
    known.add(0, 0, true, {});
    known.add(2, 1, false, {});
    known.calibration->verdict = {calibration::Grade::Poor, "Not <good>.", {"Hold it there."}};
    known.calibration->notices = {"A print is alone."};
    known.calibration->leftOut = {{1, calibration::Misfit::Moved, "The print moved."}};
    calibration::CameraTrust &trust = known.calibration->cameras[0];
    trust.rms = 0.1234;
    trust.corners = 321;
    trust.photographs = 2;
    trust.sigmas = {0.12, 0.034, 5.6, 0.78, 0.0012, 0.0034, 0.00056, 0.000078, 0.009};
    trust.distance = 530;
    trust.uncertainty = mapOf({0.5, 0.02, {}, 0.02, 0.02, 0.02, 0.02, 0.25});
    known.calibration->cameras[1].sigmas.resize(8);
    SummaryView view;
    show(view, known.make());
    const QString text = view.findChild<QTextBrowser *>()->toPlainText().replace(QChar(0xa0), ' ').simplified();
    const QString parts[] = {"Not <good>.",
                             "What to do Hold it there.",
                             "Camera left 1200 × 900 px, pinhole, 5 distortion coefficients",
                             "fx 1100.00 ± 0.12 px fy 1100.000 ± 0.034 px cx 599.5 ± 5.6 px cy 449.50 ± 0.78 px "
                             "k1 -0.2000 ± 0.0012 k2 0.0800 ± 0.0034 p1 0.00100 ± 0.00056 p2 -0.000500 ± 0.000078 "
                             "k3 0.0100 ± 0.0090",
                             "Residual (rms per corner) 0.123 px",
                             "Corners used 321",
                             "Photographs used 2",
                             "distance of the patterns 530 mm",
                             "Greatest uncertainty at that distance 0.500 px",
                             "Camera right 800 × 600 px, equidistant fisheye",
                             "Good to know A print is alone.",
                             "Left out 2.jpg: The print moved."};
    int at = 0;
    for (const QString &part : parts) {
        const int found = text.indexOf(part, at);
        QVERIFY2(found >= at, qPrintable(part + " is not in its place in " + text));
        at = found + part.size();
    }
    // A bad verdict is on red ground, and a good one on green ground.
    const auto ground = [&view] { return view.grab().toImage().pixelColor(500, 20); };
    QVERIFY(ground().red() > ground().green() + 80);
    known.calibration->verdict.grade = calibration::Grade::Good;
    view.setResult(known.make());
    QVERIFY(ground().green() > ground().red() + 80);
}

void ResultViewsTest::saysWhyThereIsNoResult() {
    SessionResult impossible;
    impossible.problem = "All <photographs> are alike.";
    SummaryView summary;
    show(summary, nullptr);
    const auto *text = summary.findChild<QTextBrowser *>();
    QVERIFY(text->toPlainText().contains("Add photographs"));
    summary.setResult(std::make_shared<const SessionResult>(impossible));
    QCOMPARE(text->toPlainText().trimmed(), impossible.problem);
    const std::unique_ptr<ResultView> others[] = {std::make_unique<CoverageView>(), std::make_unique<ResidualView>(),
                                                  std::make_unique<UncertaintyView>()};
    for (const auto &view : others) {
        show(*view, std::make_shared<const SessionResult>(impossible));
        QVERIFY2(summaryOf(*view).contains("Nothing is calibrated yet"), view->metaObject()->className());
    }
}

void ResultViewsTest::drawsTheNextPhotograph() {
    Builder known;
    calibration::NextPhotograph next;
    next.print = 1;
    next.cameraFromPrint = {Eigen::Vector3d::Zero(), {-200, 0, 800}};  // left of the middle of the picture
    next.uncertaintyBefore = 0.8;
    next.uncertaintyAfter = 0.25;
    next.text = "Hold pattern 7 to the left.";
    known.calibration->next = next;
    known.result.textures[0].clear();  // the view must draw the texture of print 1
    NextPhotographView view;
    view.setResult(known.make());
    view.resize(600, 480);
    view.show();
    QCOMPARE(drawnText(view), QString("Next photograph: Hold pattern 7 to the left. It lowers the greatest uncertainty "
                                      "from 0.800 px to 0.250 px."));
    // Pattern 7 is drawn in black and white, in the left half of the grey picture.
    const QImage drawn = view.grab().toImage();
    int left = 0;
    int right = 0;
    for (int y = 80; y < drawn.height() - 10; ++y) {
        for (int x = 60; x < 540; ++x) {
            const int grey = qGray(drawn.pixel(x, y));
            (x < 300 ? left : right) += grey < 40 || grey > 240 ? 1 : 0;
        }
    }
    QVERIFY2(left > 3000 && right < left / 10, qPrintable(QString("%1 and %2 pixels").arg(left).arg(right)));
}

// The view has 600 x 550 pixels. It shows the frame of 1200 x 900 pixels at half the frame's size. The top of the frame
// is 50 pixels below the top of the view.
void ResultViewsTest::marksTheCornersOfALiveFrame() {
    LiveFrame frame;
    frame.size = {1200, 900};
    frame.picture = QImage(400, 300, QImage::Format_RGB32);
    frame.picture.fill(Qt::white);
    pattern_reader::PatternReading reading;
    reading.kind = pattern_reader::PatternKind::Tile;
    reading.tile = 3;
    reading.corners = {{{99.5F, 199.5F}, {1, 1}}, {{1099.5F, 799.5F}, {2, 2}}};
    frame.readings = std::make_shared<const PatternReadings>(PatternReadings{reading});
    LiveView view;
    view.resize(600, 550);
    view.showFrame(frame);
    QPolygonF circles;
    for (const DrawnMark &mark : drawnMarks(view)) {
        if (mark.element == "circle") {
            circles << mark.points[0];
        }
    }
    QCOMPARE(circles, QPolygonF(QVector<QPointF>{{50, 150}, {550, 450}}));
    QCOMPARE(drawnText(view), QString("2"));

    // If there are many circles, one is drawn and then copied. The copies must be in the right places.
    while (reading.corners.size() < 150) {
        const auto next = reading.corners[reading.corners.size() - 2];
        reading.corners.push_back(next);
    }
    frame.readings = std::make_shared<const PatternReadings>(PatternReadings{reading});
    view.showFrame(frame);
    const QImage drawn = view.grab().toImage();
    for (const QPoint &middle : {QPoint(50, 150), QPoint(550, 450)}) {
        QCOMPARE(drawn.pixelColor(middle), QColor(Qt::white));
        for (const QPoint &side : {QPoint(-4, 0), QPoint(3, 0), QPoint(0, -4), QPoint(0, 3)}) {
            QVERIFY(drawn.pixelColor(middle + side).green() < 180);
        }
    }
    view.clear("Nothing yet.");
    QCOMPARE(drawnText(view), QString("Nothing yet."));
}

void ResultViewsTest::drawsPrintsAndCamerasInTheirPlaces() {
    Builder known;
    known.add(0, 0, true, {});
    known.add(1, 0, false, {});
    known.add(3, 1, true, {});
    SceneView view;
    show(view, known.make());
    const QVector<DrawnMark> marks = drawnMarks(view);
    QRectF paper;
    int lastPaper = 0;
    int firstCamera = marks.size();
    int cameraSides = 0;
    for (int i = 0; i < marks.size(); ++i) {
        if (marks[i].element == "path" && marks[i].fill == QColor(244, 244, 240)) {
            paper |= marks[i].points.boundingRect();
            lastPaper = i;
        } else if (marks[i].element == "path" && marks[i].points.size() >= 3 && marks[i].stroke.isValid() &&
                   marks[i].stroke != QColor("black")) {
            firstCamera = qMin(firstCamera, i);
            ++cameraSides;
        }
    }
    const QPointF four = placeOfText(marks, "4");
    const QPointF seven = placeOfText(marks, "7");
    QVERIFY(seven.x() > four.x() + 50);
    QVERIFY2(paper.contains(four) && paper.contains(seven), "a print is not where its number is");
    // Each camera has five sides. No camera is drawn for the photograph that is left out.
    QCOMPARE(cameraSides, 2 * 5);
    QVERIFY2(firstCamera > lastPaper, "prints cover cameras that are in front of them");

    // Seen from above, the z axis of the print points away from the cameras.
    for (int i = 0; i < 40; ++i) {
        QTest::keyClick(&view, Qt::Key_Down);
    }
    const QVector<DrawnMark> above = drawnMarks(view);
    QPolygonF cameras;
    for (const DrawnMark &mark : above) {
        if (mark.element == "path" && mark.stroke == QColor(0, 114, 178)) {
            cameras += mark.points;
        }
    }
    const QPointF origin = placeOfText(above, "4");
    const QPointF alongZ = placeOfText(above, "z") - origin;
    const QPointF toCameras = cameras.boundingRect().center() - origin;
    QVERIFY(QPointF::dotProduct(alongZ, toCameras) < 0);
}

void ResultViewsTest::turnsTheSceneWithTheMouse() {
    SceneView view;
    show(view, Builder().make());
    // The z axis of pattern 4 leads away from the viewer.
    const auto axis = [&view] {
        const QVector<DrawnMark> marks = drawnMarks(view);
        return placeOfText(marks, "z") - placeOfText(marks, "4");
    };
    const auto drag = [&view](QPointF from, QPointF to, Qt::KeyboardModifiers keys) {
        for (const auto &[type, at] : {std::pair(QEvent::MouseButtonPress, from), std::pair(QEvent::MouseMove, to)}) {
            QMouseEvent event(type, at, Qt::LeftButton, Qt::LeftButton, keys);
            QCoreApplication::sendEvent(&view, &event);
        }
    };
    const QPointF first = axis();
    const QPointF firstPlace = placeOfText(drawnMarks(view), "4");
    // The near side of the scene follows the mouse, so the far end of the axis moves the other way.
    drag({300, 300}, {330, 300}, {});
    QVERIFY(axis().x() < first.x() - 5);
    const QPointF turned = axis();
    drag({300, 300}, {300, 330}, {});
    QVERIFY(axis().y() < turned.y() - 5);
    QTest::mouseDClick(&view, Qt::LeftButton);
    QVERIFY((axis() - first).manhattanLength() < 1);
    drag({300, 300}, {330, 280}, Qt::ShiftModifier);
    QVERIFY((axis() - first).manhattanLength() < 1);
    QVERIFY((placeOfText(drawnMarks(view), "4") - firstPlace - QPointF(30, -20)).manhattanLength() < 1);
    const auto length = [](QPointF vector) { return std::hypot(vector.x(), vector.y()); };
    QTest::keyClick(&view, Qt::Key_Plus);
    const double enlarged = length(axis()) / length(first);
    QVERIFY2(enlarged > 1.15 && enlarged < 1.35, qPrintable(QString::number(enlarged)));
}

QTEST_MAIN(ResultViewsTest)
#include "result_views_test.moc"
