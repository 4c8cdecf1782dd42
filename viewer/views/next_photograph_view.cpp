#include "viewer/views/next_photograph_view.h"

#include <QPainter>

#include "viewer/views/drawing.h"
#include "viewer/views/print_drawing.h"

namespace {

constexpr int margin = 8;
const QColor lightColour(245, 245, 245);
const QColor darkColour(20, 20, 24);

}  // namespace

NextPhotographView::NextPhotographView(QWidget *parent) : QWidget(parent) {
    setAccessibleName(tr("Next photograph"));
}

void NextPhotographView::setResult(std::shared_ptr<const SessionResult> newResult) {
    const bool hasAdvice = newResult && newResult->calibration && newResult->calibration->next;
    result = hasAdvice ? std::move(newResult) : nullptr;
    setAccessibleDescription(hasAdvice ? QString::fromStdString(result->calibration->next->text) : QString());
    update();
}

void NextPhotographView::paintEvent(QPaintEvent *) {
    if (!result) {
        return;
    }
    const calibration::Calibration &calibration = *result->calibration;
    const calibration::NextPhotograph &next = *calibration.next;
    const calibration::Camera &camera = calibration.observations.cameras[size_t(next.camera)];
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QString text =
        tr("Next photograph: %1 It lowers the greatest uncertainty from %2 to %3.")
            .arg(QString::fromStdString(next.text), pixels(next.uncertaintyBefore), pixels(next.uncertaintyAfter));
    const QRect column = rect().adjusted(margin, margin, -margin, -margin);
    const QRect textPlace = painter.boundingRect(column, Qt::AlignLeft | Qt::TextWordWrap, text);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(column, Qt::AlignLeft | Qt::TextWordWrap, text);

    QRectF room = column;
    room.setTop(textPlace.bottom() + margin);
    QSizeF size = QSizeF(camera.width, camera.height).scaled(room.size(), Qt::KeepAspectRatio);
    const QRectF picture(room.topLeft() + QPointF((room.width() - size.width()) / 2, 0), size);
    painter.fillRect(picture, QColor(120, 128, 138));
    painter.setClipRect(picture);
    painter.translate(picture.topLeft());
    painter.scale(size.width() / camera.width, size.width() / camera.width);
    const auto seen = seenBy(camera, calibration.estimate.intrinsics[size_t(next.camera)], next.cameraFromPrint);
    const std::vector<PrintBlock> &texture = result->textureOf(next.print);
    const bool inDetail = cellCount(texture) <= mostCellsInDetail;
    for (const PrintBlock &block : texture) {
        drawBlock(painter, block, inDetail, seen, lightColour, darkColour);
    }
    painter.resetTransform();
    painter.setClipping(false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette().color(QPalette::WindowText), 1));
    painter.drawRect(picture);
}
