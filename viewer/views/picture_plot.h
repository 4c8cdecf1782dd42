// A plot over the area of a camera's picture. Both axes are in pixels and have the same scale; y points down.
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
    // Limits the plot's height to what the picture needs at the present width.
    void limitHeight();

    double heightPerWidth = 0.75;
    QwtPlotRescaler *rescaler;
};

// Gives a plot a grid, and axis titles in a size that fits small plots. Every plot of the viewer is set up in this way.
void setUpPlot(QwtPlot &plot, const QString &xTitle, const QString &yTitle);
