// A plot over the area of a camera's picture: pixels on both axes, y down, both on the same scale.
#pragma once

#include <qwt_plot.h>

#include "calibration/observations.h"

class QwtPlotRescaler;

class PicturePlot : public QwtPlot {
public:
    explicit PicturePlot(QWidget *parent = nullptr);
    void setCamera(const calibration::Camera &camera);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    // To what the picture needs at the present width.
    void limitHeight();

    double heightPerWidth = 0.75;
    QwtPlotRescaler *rescaler;
};

// A grid, and axis titles in a size that fits small plots. For every plot of the viewer.
void setUpPlot(QwtPlot &plot, const QString &xTitle, const QString &yTitle);
