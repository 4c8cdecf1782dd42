#include "viewer/views/result_view.h"

#include <QComboBox>
#include <QSignalBlocker>
#include <QVBoxLayout>

void ResultView::setResult(std::shared_ptr<const SessionResult> newResult) {
    result = std::move(newResult);
    isOutOfDate = !isVisible();
    if (isVisible()) {
        refresh();
    }
}

void ResultView::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    if (isOutOfDate) {
        isOutOfDate = false;
        refresh();
    }
}

CameraView::CameraView(QWidget *parent)
    : ResultView(parent), column(new QVBoxLayout(this)), choice(new QComboBox(this)) {
    choice->setAccessibleName(tr("Camera"));
    column->addWidget(choice);
    connect(choice, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] { showChosen(); });
}

void CameraView::refresh() {
    const QSignalBlocker blocker(choice);
    const QString chosen = choice->currentText();
    choice->clear();
    if (calibrated() != nullptr) {
        for (const calibration::Camera &camera : calibrated()->observations.cameras) {
            choice->addItem(QString::fromStdString(camera.name));
        }
    }
    choice->setCurrentIndex(qMax(0, choice->findText(chosen)));
    choice->setVisible(choice->count() > 1);
    showChosen();
}

void CameraView::showChosen() {
    const int camera = choice->currentIndex();
    const bool isKnown = calibrated() != nullptr && camera >= 0 && calibrated()->estimate.hasCamera[size_t(camera)];
    showCamera(isKnown ? camera : -1);
}

QString CameraView::whyNoCamera() const {
    return calibrated() == nullptr ? tr("Nothing is calibrated yet.") : tr("This camera is not calibrated.");
}
