// Tests the texture of prints, which is the list of shapes with which the viewer draws a print. The texture is drawn as
// seen from straight above, and the drawing is read like a photograph. The reader must find in the drawing what was
// printed.
#include <QImage>
#include <QPainter>
#include <QtTest>
#include <opencv2/core.hpp>

#include "pattern_reader/printed_pattern.h"
#include "viewer/views/print_drawing.h"

using pattern_reader::PatternKind;
using pattern_reader::PatternReading;

Q_DECLARE_METATYPE(PrintLook)

namespace {

constexpr double gridSpacing = 24;
constexpr double pixelsPerMm = 2;

// Returns a print with points.width columns and points.height rows of points. `first` has the lattice coordinates of
// the first point.
calibration::Print printWith(const PrintLook &look, cv::Point first, cv::Size points) {
    const int step = look.kind == PatternKind::Plate ? 2 : 1;
    PatternReading whole;
    whole.kind = look.kind;
    whole.values = look.values;
    calibration::Print print;
    for (int row = 0; row < points.height; ++row) {
        for (int column = 0; column < points.width; ++column) {
            whole.corners.push_back({{}, first + step * cv::Point(column, row)});
            print.cells.emplace_back(column, row);
        }
    }
    for (const cv::Point3d &point : pattern_reader::objectPoints(whole, gridSpacing)) {
        print.points.emplace_back(point.x, point.y);
    }
    return print;
}

QImage drawn(const std::vector<PrintBlock> &texture, bool inDetail) {
    QPointF least(1e9, 1e9);
    for (const PrintBlock &block : texture) {
        for (const Eigen::Vector3d &corner : block.whole) {
            least = {qMin(least.x(), corner.x()), qMin(least.y(), corner.y())};
        }
    }
    QImage picture(700, 700, QImage::Format_Grayscale8);
    picture.fill(120);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const auto place = [&](const Eigen::Vector3d &at) {
        return std::optional(QPointF(40, 40) + pixelsPerMm * (QPointF(at.x(), at.y()) - least));
    };
    for (const PrintBlock &block : texture) {
        drawBlock(painter, block, inDetail, place, Qt::white, Qt::black);
    }
    painter.end();
    return picture;
}

std::vector<PatternReading> readFrom(QImage picture) {
    return pattern_reader::readPatterns(
        cv::Mat(picture.height(), picture.width(), CV_8U, picture.bits(), size_t(picture.bytesPerLine())));
}

// Returns the share of the pixels that are dark in one picture and light in the other.
double differenceOf(const QImage &a, const QImage &b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            count += qAbs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))) > 100 ? 1 : 0;
        }
    }
    return double(count) / (a.width() * a.height());
}

pattern_reader::PatternValues valuesWith(double thickness, std::optional<cv::Point> offset = {}) {
    pattern_reader::PatternValues values;
    values.thickness = thickness;
    values.offset = offset;
    return values;
}

}  // namespace

class PrintTextureTest : public QObject {
    Q_OBJECT

private slots:
    void isReadAsThePatternThatWasPrinted_data();
    void isReadAsThePatternThatWasPrinted();
};

void PrintTextureTest::isReadAsThePatternThatWasPrinted_data() {
    QTest::addColumn<PrintLook>("look");
    QTest::addColumn<QPoint>("first");
    QTest::addColumn<QSize>("points");
    QTest::newRow("pattern 3 of an assembly")
        << PrintLook{PatternKind::Tile, 4, true, {}} << QPoint(1, 1) << QSize(15, 15);
    QTest::newRow("with light first square")
        << PrintLook{PatternKind::Tile, 4, false, {}} << QPoint(1, 1) << QSize(15, 15);
    QTest::newRow("single, with its thickness")
        << PrintLook{PatternKind::Tile, 0, true, valuesWith(3.5)} << QPoint(1, 1) << QSize(15, 15);
    QTest::newRow("Flexible pattern") << PrintLook{PatternKind::Plane, -1, true, {}} << QPoint(101, 60) << QSize(12, 9);
    QTest::newRow("plate") << PrintLook{PatternKind::Plate, -1, true, valuesWith(2)} << QPoint(2, 2) << QSize(7, 7);
    QTest::newRow("plate with offset") << PrintLook{PatternKind::Plate, -1, true, valuesWith(0, cv::Point(5, -7))}
                                       << QPoint(2, 2) << QSize(7, 7);
}

void PrintTextureTest::isReadAsThePatternThatWasPrinted() {
    QFETCH(const PrintLook, look);
    QFETCH(const QPoint, first);
    QFETCH(const QSize, points);
    calibration::PrintShape flat;
    flat.reach = 100;
    const calibration::Print print = printWith(look, {first.x(), first.y()}, {points.width(), points.height()});
    const std::vector<PrintBlock> texture = textureOf(print, flat, look);
    // Without detail, only the large shapes are drawn. The small marks of the pattern's code are missing, so the two
    // drawings differ in few pixels.
    const QImage detailed = drawn(texture, true);
    const double difference = differenceOf(detailed, drawn(texture, false));
    QVERIFY2(difference > 0 && difference < 0.04, qPrintable(QString::number(difference)));
    const std::vector<PatternReading> readings = readFrom(detailed);
    QCOMPARE(readings.size(), size_t(1));
    const PatternReading &reading = readings[0];
    QVERIFY(reading.kind == look.kind);
    QCOMPARE(reading.tile, look.tile);
    QCOMPARE(int(reading.corners.size()), points.width() * points.height());
    QCOMPARE(QPoint(reading.corners[0].lattice.x, reading.corners[0].lattice.y), first);
    if (look.kind != PatternKind::Plate) {
        QCOMPARE(reading.topLeftSquareDark, look.isTopLeftSquareDark);
    }
    if (look.kind == PatternKind::Plane) {  // its code carries no values
        return;
    }
    QVERIFY(reading.values.has_value());
    if (look.values && look.values->offset) {
        QVERIFY(reading.values->offset == look.values->offset);
    } else {
        QCOMPARE(reading.values->gridSpacing.value_or(0), gridSpacing);
    }
    if (look.tile <= 0 && look.values && !look.values->offset) {
        QCOMPARE(reading.values->thickness.value_or(0), look.values->thickness.value_or(0));
    }
}

QTEST_GUILESS_MAIN(PrintTextureTest)
#include "print_texture_test.moc"
