#include "viewer/views/drawing.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QLineF>
#include <QPixmap>
#include <QtMath>
#include <cmath>

namespace {

constexpr int labelMargin = 3;  // pixels
constexpr int mostDecimals = 9;
constexpr int mostExactCircles = 100;

QString tr(const char *text) {
    return QCoreApplication::translate("Drawing", text);
}

}  // namespace

// Uses the palette of Okabe and Ito without black.
QColor patternColour(int index) {
    static const QColor colours[] = {{0, 158, 115}, {230, 159, 0}, {86, 180, 233}, {204, 121, 167},
                                     {213, 94, 0},  {0, 114, 178}, {240, 228, 66}};
    return colours[size_t(index < 0 ? 0 : index) % std::size(colours)];
}

QColor gradeColour(calibration::Grade grade) {
    switch (grade) {
        case calibration::Grade::Good:
            return {26, 127, 85};
        case calibration::Grade::Usable:
            return {178, 110, 0};
        case calibration::Grade::Poor:
            break;
    }
    return {190, 45, 45};
}

QColor residualColour() {
    return {255, 80, 60};
}

bool isDark(const QPalette &palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

QString withSigma(double value, double sigma, const QString &unit) {
    const QString ending = unit.isEmpty() ? QString() : QChar(0xa0) + unit;
    if (!(sigma > 0) || !std::isfinite(sigma)) {
        return rounded(value) + ending;
    }
    const int decimals = qBound(0, 1 - int(std::floor(std::log10(sigma))), mostDecimals);
    return QString("%1 ± %2").arg(value, 0, 'f', decimals).arg(sigma, 0, 'f', decimals).replace(' ', QChar(0xa0)) +
           ending;
}

QString rounded(double value) {
    if (value == 0 || !std::isfinite(value)) {
        return value == 0 ? QString("0") : QString("–");
    }
    return QString::number(value, 'f', qBound(0, 2 - int(std::floor(std::log10(std::abs(value)))), mostDecimals));
}

QString pixels(double value) {
    return QString::number(value, 'f', value < 0.01 ? 4 : value < 1 ? 3 : 2) + QChar(0xa0) + "px";
}

void drawCircles(QPainter &painter, const QPolygonF &middles, double radius, const QColor &colour) {
    const QPen pen(colour, 1.6);
    if (middles.size() <= mostExactCircles) {
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        for (const QPointF &middle : middles) {
            painter.drawEllipse(middle, radius, radius);
        }
        return;
    }
    const double ratio = painter.device()->devicePixelRatioF();
    const double half = std::ceil(radius + pen.widthF());
    QPixmap circle(qCeil(2 * half * ratio), qCeil(2 * half * ratio));
    circle.setDevicePixelRatio(ratio);
    circle.fill(Qt::transparent);
    QPainter circlePainter(&circle);
    circlePainter.setRenderHint(QPainter::Antialiasing);
    circlePainter.setPen(pen);
    circlePainter.drawEllipse(QPointF(half, half), radius, radius);
    circlePainter.end();
    for (const QPointF &middle : middles) {
        painter.drawPixmap((middle - QPointF(half, half)).toPoint(), circle);
    }
}

void drawArrow(QPainter &painter, QPointF from, QPointF to) {
    const QLineF line(from, to);
    painter.drawLine(line);
    const double head = qMin(7.0, line.length() / 2);
    if (head < 1) {
        return;
    }
    for (const double side : {150.0, -150.0}) {
        QLineF wing = line;
        wing.translate(line.dx(), line.dy());
        wing.setLength(head);
        wing.setAngle(line.angle() + side);
        painter.drawLine(wing);
    }
}

void drawLabel(QPainter &painter, QPointF middle, const QString &text) {
    QRectF place = QFontMetricsF(painter.font()).boundingRect(text);
    place.adjust(-2 * labelMargin, -labelMargin, 2 * labelMargin, labelMargin);
    place.moveCenter(middle);
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(20, 24, 30, 200));
    painter.drawRoundedRect(place, labelMargin, labelMargin);
    painter.setPen(Qt::white);
    painter.drawText(place, Qt::AlignCenter, text);
    painter.restore();
}

QString nameOf(const pattern_reader::PatternReading &reading) {
    using pattern_reader::PatternKind;
    switch (reading.kind) {
        case PatternKind::Tile:
            return reading.tile > 0 ? QString::number(reading.tile - 1) : tr("Single");
        case PatternKind::Plane:
            return tr("Flexible");
        case PatternKind::Plate:
            return tr("Plate");
        case PatternKind::Board:
            break;
    }
    return tr("Board");
}
