#include "viewer/views/live_view.h"

#include <QPainter>

#include "viewer/views/drawing.h"
#include "viewer/views/print_drawing.h"

namespace {

constexpr double cornerRadius = 3;
constexpr int borderWidth = 4;
const QColor adviceColour(255, 210, 0, 90);

}  // namespace

LiveView::LiveView(QWidget *parent) : QWidget(parent) {
    setAccessibleName(tr("Live picture"));
}

void LiveView::showFrame(const LiveFrame &newFrame) {
    frame = newFrame;
    update();
}

void LiveView::clear(const QString &newHint) {
    frame = {};
    hint = newHint;
    update();
}

void LiveView::setResult(std::shared_ptr<const SessionResult> newResult) {
    result = std::move(newResult);
    update();
}

void LiveView::setBorder(const QColor &colour) {
    border = colour;
    update();
}

void LiveView::drawCorners(QPainter &painter, double scale) const {
    for (const auto &reading : *frame.readings) {
        QPolygonF places;
        QPointF middle;
        for (const auto &corner : reading.corners) {
            places << scale * QPointF(double(corner.image.x) + 0.5, double(corner.image.y) + 0.5);
            middle += places.last() / double(reading.corners.size());
        }
        drawCircles(painter, places, cornerRadius, patternColour(qMax(0, reading.tile)));
        drawLabel(painter, middle, nameOf(reading));
    }
}

bool LiveView::hasAdvice() const {
    if (!result || !result->calibration || !result->calibration->next) {
        return false;
    }
    const calibration::Calibration &calibration = *result->calibration;
    const calibration::Camera &camera = calibration.observations.cameras[size_t(calibration.next->camera)];
    return QSize(camera.width, camera.height) == frame.size;
}

void LiveView::drawAdvice(QPainter &painter) const {
    const calibration::Calibration &calibration = *result->calibration;
    const calibration::NextPhotograph &next = *calibration.next;
    const auto seen = seenBy(calibration.observations.cameras[size_t(next.camera)],
                             calibration.estimate.intrinsics[size_t(next.camera)], next.cameraFromPrint);
    const std::vector<PrintBlock> &texture = result->textureOf(next.print);
    const bool inDetail = cellCount(texture) <= mostCellsInDetail;
    for (const PrintBlock &block : texture) {
        drawBlock(painter, block, inDetail, seen, {}, adviceColour);
    }
}

void LiveView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.fillRect(rect(), isDark(palette()) ? palette().color(QPalette::Base) : QColor(226, 230, 236));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (frame.picture.isNull()) {
        painter.setPen(isDark(palette()) ? palette().color(QPalette::Text) : QColor(70, 80, 92));
        painter.drawText(rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap, hint);
        return;
    }
    const QSizeF size = QSizeF(frame.size).scaled(QWidget::size(), Qt::KeepAspectRatio);
    const QRectF place(QPointF(width() - size.width(), height() - size.height()) / 2, size);
    painter.drawImage(place, frame.picture);
    painter.save();
    painter.setClipRect(place);
    painter.translate(place.topLeft());
    const double scale = size.width() / frame.size.width();
    if (hasAdvice()) {
        painter.save();
        painter.scale(scale, scale);
        drawAdvice(painter);
        painter.restore();
    }
    drawCorners(painter, scale);
    painter.restore();
    if (border.isValid()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(border, borderWidth));
        painter.drawRect(place.adjusted(borderWidth / 2.0, borderWidth / 2.0, -borderWidth / 2.0, -borderWidth / 2.0));
    }
}
