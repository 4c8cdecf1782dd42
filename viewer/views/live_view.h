// The picture of a live source with the corners found in it, and where to hold the target next.
#pragma once

#include <QWidget>
#include <memory>

#include "calibration/calibrate.h"
#include "viewer/session/live_capture.h"

class LiveView : public QWidget {
    Q_OBJECT

public:
    explicit LiveView(QWidget *parent = nullptr);

    void showFrame(const LiveFrame &newFrame);
    // Without a frame, this text is shown.
    void clear(const QString &newHint);
    // Null if there is none. Its advice is drawn over frames of the size that its camera has.
    void setCalibration(std::shared_ptr<const calibration::Calibration> newCalibration);
    // A frame in this colour is drawn around the picture.
    void setBorder(const QColor &colour);

    QSize sizeHint() const override { return {480, 360}; }
    QSize minimumSizeHint() const override { return {160, 120}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void drawCorners(QPainter &painter, double scale) const;
    void drawAdvice(QPainter &painter) const;

    LiveFrame frame;
    QString hint;
    QColor border;
    std::shared_ptr<const calibration::Calibration> calibration;
};

// Whether the calibration's advice for the next photograph is for a camera with pictures of this size.
bool hasAdviceFor(const calibration::Calibration *calibration, const QSize &size);
