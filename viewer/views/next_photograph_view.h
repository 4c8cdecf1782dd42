// Shows the photograph that would help most: where to hold the target, as the camera would see it.
#pragma once

#include <QWidget>
#include <memory>

#include "calibration/calibrate.h"

class NextPhotographView : public QWidget {
    Q_OBJECT

public:
    explicit NextPhotographView(QWidget *parent = nullptr);
    void setCalibration(std::shared_ptr<const calibration::Calibration> newCalibration);
    QSize minimumSizeHint() const override { return {200, 170}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    std::shared_ptr<const calibration::Calibration> calibration;
};
