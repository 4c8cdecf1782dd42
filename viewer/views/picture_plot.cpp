#include "viewer/views/picture_plot.h"

#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_rescaler.h>
#include <qwt_text.h>

#include <QPen>

namespace {

constexpr int leastWidth = 160;
constexpr int leastHeight = 120;
constexpr int mostLabels = 5;

QwtText axisTitle(const QString &text, const QFont &font) {
    QwtText title(text);
    title.setFont(font);
    return title;
}

}  // namespace

void setUpPlot(QwtPlot &plot, const QString &xTitle, const QString &yTitle) {
    plot.setAxisTitle(QwtPlot::xBottom, axisTitle(xTitle, plot.font()));
    plot.setAxisTitle(QwtPlot::yLeft, axisTitle(yTitle, plot.font()));
    for (const int axis : {QwtPlot::xBottom, QwtPlot::yLeft, QwtPlot::yRight}) {
        plot.setAxisFont(axis, plot.font());
    }
    plot.setMinimumSize(leastWidth, leastHeight);  // the plot's own hint is too large for small screens
    plot.plotLayout()->setAlignCanvasToScales(true);
    auto *canvas = qobject_cast<QwtPlotCanvas *>(plot.canvas());
    canvas->setFrameStyle(QFrame::NoFrame);
    canvas->setCursor(Qt::ArrowCursor);
    plot.setCanvasBackground(plot.palette().color(QPalette::Base));
    auto *grid = new QwtPlotGrid;  // the plot owns it
    QColor line = plot.palette().color(QPalette::Text);
    line.setAlpha(40);
    grid->setPen(line, 1);
    grid->attach(&plot);
}

PicturePlot::PicturePlot(QWidget *parent) : QwtPlot(parent) {
    setUpPlot(*this, "x [px]", "y [px]");
    setAxisMaxMajor(QwtPlot::xBottom, mostLabels);  // more labels would overlap in a narrow window
    rescaler = new QwtPlotRescaler(canvas(), QwtPlot::xBottom, QwtPlotRescaler::Fitting);
    rescaler->setAspectRatio(1);
    rescaler->setAspectRatio(QwtPlot::yRight, 0);
    rescaler->setExpandingDirection(QwtPlotRescaler::ExpandBoth);
}

void PicturePlot::setCamera(const calibration::Camera &camera) {
    setAxisScale(QwtPlot::xBottom, 0, camera.width);
    setAxisScale(QwtPlot::yLeft, camera.height, 0);
    updateAxes();  // sets the directions of the axes, which the rescaler then keeps
    heightPerWidth = double(camera.height) / camera.width;
    rescaler->setIntervalHint(QwtPlot::xBottom, {0, double(camera.width)});
    rescaler->setIntervalHint(QwtPlot::yLeft, {0, double(camera.height)});
    limitHeight();
    rescaler->rescale();
}

void PicturePlot::resizeEvent(QResizeEvent *event) {
    QwtPlot::resizeEvent(event);
    limitHeight();
}

void PicturePlot::limitHeight() {
    const int needed = qRound(canvas()->width() * heightPerWidth) + height() - canvas()->height();
    setMaximumHeight(qMax(leastHeight, needed));
}
