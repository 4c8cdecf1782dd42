// Measures where the photograph's view draws the picture, the corners, the axes and the residuals, also after the
// picture is moved, zoomed or straightened. The picture is white with a black dot at each corner.
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWheelEvent>
#include <QtTest>

#include "tests/viewer/drawn_marks.h"
#include "tests/viewer/known_result.h"
#include "viewer/views/photograph_view.h"

namespace {

const QSize pictureSize(1200, 900);
const QSize viewSize(800, 600);
constexpr double fittedScale = 2.0 / 3;
const QString arrowColour = "#ffd200";
const QString uncountedColour = "#ff503c";

// Where the last corner lies in the camera's coordinates: its x and y at a distance of 1 along the optical axis.
const QPointF straightDirection(0.3, 0.2);
// The pattern's x axis points down in the picture, and its y axis to the left. The last corner is far from the others.
std::vector<pattern_reader::PatternCorner> cornersOf(const calibration::Calibration &calibration) {
    Eigen::Vector2d bent;
    calibration::project(calibration.observations.cameras[0].lens, calibration.estimate.intrinsics[0].data(),
                         {straightDirection.x(), straightDirection.y(), 1}, bent);
    return {{{700, 300}, {1, 1}},
            {{700, 340}, {2, 1}},
            {{660, 300}, {1, 2}},
            {{660, 340}, {2, 2}},
            {{float(bent.x()), float(bent.y())}, {12, 14}}};
}

double distance(QPointF a, QPointF b) {
    return QLineF(a, b).length();
}

}  // namespace

class PhotographViewTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void fitsAndMarksTheCorners();
    void movesWithKeysAndMouse();
    void zoomsAboutTheMouse();
    void keepsMarksOnThePicture_data();
    void keepsMarksOnThePicture();
    void centresOnACorner();
    void drawsTheLongestResiduals();
    void straightensPictureAndMarks();
    void picksTheNearestCorner();
    void saysWhyThereIsNoPicture();

private:
    QVector<QPointF> corners() {
        QVector<QPointF> places;
        for (const DrawnMark &mark : drawnMarks(*view)) {
            if (mark.element == "circle") {
                places << mark.points[0];
            }
        }
        return places;
    }
    bool isLoaded() {
        return QTest::qWaitFor([this] { return corners().size() == int(readings->at(0).corners.size()); }, 10000);
    }
    // Returns the middle of the black pixels near a place; (-1, -1) if there are none.
    QPointF dotNear(QPointF place, int reach) {
        view->setShowsCorners(false);
        view->setShowsResiduals(false);
        const QImage picture = view->grab().toImage();
        view->setShowsCorners(true);
        view->setShowsResiduals(true);
        QRect dot;
        const QPoint middle = place.toPoint();
        for (int y = middle.y() - reach; y <= middle.y() + reach; ++y) {
            for (int x = middle.x() - reach; x <= middle.x() + reach; ++x) {
                if (picture.rect().contains(x, y) && qGray(picture.pixel(x, y)) < 100) {
                    dot |= QRect(x, y, 1, 1);
                }
            }
        }
        return dot.isNull() ? QPointF(-1, -1) : QRectF(dot).center();
    }
    void wheel(QPointF at, int angle) {
        QWheelEvent event(at, view->mapToGlobal(at.toPoint()), {}, {0, angle}, Qt::NoButton, {}, Qt::NoScrollPhase,
                          false);
        QCoreApplication::sendEvent(view.get(), &event);
    }
    void drag(QPointF from, QPointF to) {
        const auto send = [this](QEvent::Type type, QPointF at) {
            QMouseEvent event(type, at, Qt::LeftButton, Qt::LeftButton, {});
            QCoreApplication::sendEvent(view.get(), &event);
        };
        send(QEvent::MouseButtonPress, from);
        send(QEvent::MouseMove, to);
        send(QEvent::MouseButtonRelease, to);
    }

    QTemporaryDir folder;
    known_result::Builder known;
    SessionPhotograph photograph;
    std::shared_ptr<PatternReadings> readings;
    std::unique_ptr<PhotographView> view;
};

void PhotographViewTest::initTestCase() {
    pattern_reader::PatternReading reading;
    reading.kind = pattern_reader::PatternKind::Tile;
    reading.tile = 5;
    reading.corners = cornersOf(*known.calibration);
    readings = std::make_shared<PatternReadings>(PatternReadings{reading});
    QImage picture(pictureSize, QImage::Format_Grayscale8);
    picture.fill(255);
    for (const auto &corner : reading.corners) {
        for (int i = 0; i < 25; ++i) {
            picture.setPixel(qRound(corner.image.x) + i % 5 - 2, qRound(corner.image.y) + i / 5 - 2, qRgb(0, 0, 0));
        }
    }
    photograph.id = known_result::firstId;
    photograph.path = folder.filePath("dots.png");
    photograph.readings = readings;
    QVERIFY(picture.save(photograph.path));

    // The two corners of the first print are close together, so only the larger of the two residuals is drawn.
    known.add(0, 0, true, {{{700, 300}, {0.3, 0.1}}, {{692, 302}, {0.05, 0}}});
    known.add(0, 1, false, {{{200, 600}, {-0.2, 0}}});
}

void PhotographViewTest::init() {
    view = std::make_unique<PhotographView>();
    view->resize(viewSize);
    view->setResult(known.make());
    view->showPhotograph(&photograph);
    QVERIFY(isLoaded());
}

void PhotographViewTest::fitsAndMarksTheCorners() {
    const QVector<QPointF> places = corners();
    for (int i = 0; i < places.size(); ++i) {
        const cv::Point2f image = readings->at(0).corners[size_t(i)].image;
        QVERIFY(distance(places[i], fittedScale * QPointF(double(image.x) + 0.5, double(image.y) + 0.5)) < 0.01);
    }
    const QVector<DrawnMark> marks = drawnMarks(*view);
    const QPointF name = placeOfText(marks, "4");
    const QPointF x = placeOfText(marks, "x");
    const QPointF y = placeOfText(marks, "y");
    QVERIFY(distance(name, places[0]) < 15);
    QVERIFY2(x.y() > name.y() + 60 && qAbs(x.x() - name.x()) < 10, "the x axis does not point down");
    QVERIFY2(y.x() < name.x() - 60 && qAbs(y.y() - name.y()) < 10, "the y axis does not point to the left");
    wheel(places[1], 1200);  // corners show their column and row only in an enlarged picture
    const QPointF number = placeOfText(drawnMarks(*view), "2,1");
    QVERIFY(distance(number, corners()[1]) < 20);
}

void PhotographViewTest::movesWithKeysAndMouse() {
    const struct {
        Qt::Key key;
        QPointF moved;
    } keys[] = {{Qt::Key_Left, {60, 0}}, {Qt::Key_Right, {-60, 0}}, {Qt::Key_Up, {0, 60}}, {Qt::Key_Down, {0, -60}}};
    const QPointF first = corners()[0];
    for (const auto &one : keys) {
        const QPointF before = corners()[0];
        QTest::keyClick(view.get(), one.key);
        QVERIFY2(distance(corners()[0], before + one.moved) < 0.01, qPrintable(QKeySequence(one.key).toString()));
    }
    drag({100, 100}, {130, 80});
    QVERIFY(distance(corners()[0], first + QPointF(30, -20)) < 0.01);
    QTest::mouseDClick(view.get(), Qt::LeftButton);
    QVERIFY(distance(corners()[0], first) < 0.01);
    // A photograph that is shown anew is fitted into the view, whatever the zoom was before.
    QTest::keyClick(view.get(), Qt::Key_Plus);
    QVERIFY(distance(corners()[0], first) > 10);
    view->showPhotograph(nullptr);
    view->showPhotograph(&photograph);
    QVERIFY(isLoaded());
    QVERIFY(distance(corners()[0], first) < 0.01);
}

void PhotographViewTest::zoomsAboutTheMouse() {
    const QVector<QPointF> before = corners();
    wheel(before[0], 240);
    const QVector<QPointF> after = corners();
    QVERIFY(distance(after[0], before[0]) < 0.01);
    const double enlarged = distance(after[0], after[3]) / distance(before[0], before[3]);
    QVERIFY2(enlarged > 1.3 && enlarged < 1.6, qPrintable(QString::number(enlarged)));
}

void PhotographViewTest::keepsMarksOnThePicture_data() {
    QTest::addColumn<int>("wheelAngle");
    QTest::newRow("reduced") << -300;
    QTest::newRow("fitted") << 0;
    QTest::newRow("enlarged") << 900;
    QTest::newRow("enlarged until single pixels are seen") << 1800;
}

void PhotographViewTest::keepsMarksOnThePicture() {
    QFETCH(const int, wheelAngle);
    wheel(corners()[0], wheelAngle);
    drag({400, 300}, {150, 140});
    const QPointF mark = corners()[0];
    const double scale = distance(corners()[0], corners()[1]) / 40;
    const QPointF dot = dotNear(mark, int(5 * scale) + 5);
    // Where the view smooths the picture, the edges of the dot are blurred. All edges are blurred alike, so the middle
    // of the dot stays in its place.
    QVERIFY2(distance(dot, mark) < 1 + 0.2 * scale, qPrintable(QString("%1 px off").arg(distance(dot, mark))));
}

void PhotographViewTest::centresOnACorner() {
    view->centreOn({660, 340});
    QVERIFY(distance(corners()[3], QPointF(400, 300)) < 0.75);
    QVERIFY(distance(corners()[0], corners()[1]) > 79);
}

void PhotographViewTest::drawsTheLongestResiduals() {
    const auto arrows = [this](const QString &colour) {
        QVector<QLineF> lines;
        for (const DrawnMark &mark : drawnMarks(*view)) {
            if (mark.element == "polyline" && mark.stroke == QColor(colour)) {
                lines << QLineF(mark.points[0], mark.points[1]);
            }
        }
        return lines;
    };
    for (const int factor : {200, 500}) {
        view->setResidualFactor(factor);
        const QVector<QLineF> used = arrows(arrowColour);
        QCOMPARE(used.size(), 3);  // the arrow and the two sides of its head
        QVERIFY(distance(used[0].p1(), corners()[0]) < 0.01);
        QVERIFY(distance(used[0].p2() - used[0].p1(), factor * fittedScale * QPointF(0.3, 0.1)) < 0.1);
        const QVector<QLineF> unused = arrows(uncountedColour);
        QCOMPARE(unused.size(), 3);
        QVERIFY(distance(unused[0].p2() - unused[0].p1(), factor * fittedScale * QPointF(-0.2, 0)) < 0.1);
    }
    view->setShowsResiduals(false);
    QVERIFY(arrows(arrowColour).isEmpty());
}

void PhotographViewTest::straightensPictureAndMarks() {
    const QPointF bent = corners()[4];
    const QPointF straight = fittedScale * (QPointF(599.5, 449.5) + 1100 * straightDirection + QPointF(0.5, 0.5));
    QVERIFY(distance(bent, straight) > 5);
    view->setUndistorted(true);
    QTRY_VERIFY_WITH_TIMEOUT(distance(corners()[4], straight) < 0.1, 10000);
    QVERIFY(distance(dotNear(straight, 12), straight) < 1.5);
    // The picture is straightened again for a lens with more distortion.
    known_result::Builder other;
    other.calibration->estimate.intrinsics[0][4] = -0.4;
    view->setResult(other.make());
    QTRY_VERIFY_WITH_TIMEOUT(distance(corners()[4], bent) > 5 && distance(corners()[4], straight) > 5, 10000);
}

void PhotographViewTest::picksTheNearestCorner() {
    QSignalSpy picked(view.get(), &PhotographView::cornerPicked);
    // The picture is made so small that several corners are within reach of a click.
    QTest::keyClick(view.get(), Qt::Key_Minus);
    QTest::keyClick(view.get(), Qt::Key_Minus);
    QTest::keyClick(view.get(), Qt::Key_Minus);
    QTest::keyClick(view.get(), Qt::Key_Minus);
    for (int i = 0; i < 4; ++i) {
        const QPointF at = corners()[i];
        QTest::mouseClick(view.get(), Qt::LeftButton, {}, at.toPoint());
        QVERIFY2(picked.isEmpty(), "a corner is picked although none is asked for");
        view->setPicksCorners(true);
        drag(at, at + QPointF(40, 0));
        drag(at + QPointF(40, 0), at);
        QVERIFY2(picked.isEmpty(), "a drag picks a corner");
        QTest::mouseClick(view.get(), Qt::LeftButton, {}, at.toPoint());
        view->setPicksCorners(false);
        QCOMPARE(picked.size(), 1);
        const cv::Point2f expected = readings->at(0).corners[size_t(i)].image;
        QCOMPARE(picked.takeFirst()[0].toPointF(), QPointF(double(expected.x), double(expected.y)));
    }
}

void PhotographViewTest::saysWhyThereIsNoPicture() {
    view->showPhotograph(nullptr);
    QVERIFY(drawnText(*view).contains("Drop photographs here"));
    SessionPhotograph unreadable;
    unreadable.path = folder.filePath("gone.png");
    unreadable.problem = "It melted.";
    view->showPhotograph(&unreadable);
    QTRY_COMPARE(drawnText(*view), QString("It melted."));
}

QTEST_MAIN(PhotographViewTest)
#include "photograph_view_test.moc"
