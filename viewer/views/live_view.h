// Shows the picture of a live source with the corners found in it, and where to hold the target next.
#pragma once

#include <QWidget>
#include <memory>

#include "viewer/session/live_capture.h"
#include "viewer/session/session_result.h"

class LiveView : public QWidget {
    Q_OBJECT

public:
    explicit LiveView(QWidget *parent = nullptr);

    void showFrame(const LiveFrame &newFrame);
    // Shows this text instead of a frame.
    void clear(const QString &newHint);
    // `newResult` may be null. Its advice for the next photograph is drawn over the frames. If the advice is for a
    // camera whose pictures have another size than the frames, it is not drawn.
    void setResult(std::shared_ptr<const SessionResult> newResult);
    // Draws a border in this colour around the picture; none if the colour is invalid.
    void setBorder(const QColor &colour);

    QSize sizeHint() const override { return {480, 360}; }
    QSize minimumSizeHint() const override { return {160, 120}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void drawCorners(QPainter &painter, double scale) const;
    // True if there is advice for the next photograph, and if it is for a camera whose pictures have the frame's size.
    bool hasAdvice() const;
    void drawAdvice(QPainter &painter) const;

    LiveFrame frame;
    QString hint;
    QColor border;
    std::shared_ptr<const SessionResult> result;
};
