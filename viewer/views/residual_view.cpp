#include "viewer/views/residual_view.h"

#include <qwt_column_symbol.h>
#include <qwt_picker_machine.h>
#include <qwt_plot.h>
#include <qwt_plot_barchart.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_picker.h>
#include <qwt_plot_rescaler.h>
#include <qwt_symbol.h>

#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

#include "viewer/views/drawing.h"
#include "viewer/views/picture_plot.h"

namespace {

constexpr size_t mostDots = 20000;  // more dots would make the window slow without showing more
constexpr double rangeInRms = 5;    // the scatter plot shows this many times the rms in each direction
constexpr double clickReach = 10;   // pixels of the screen; a click chooses the nearest dot if it is closer than this

QwtPlotCurve *makeDots(QwtPlot *plot, const QColor &colour) {
    auto *dots = new QwtPlotCurve;  // the plot owns it
    dots->setStyle(QwtPlotCurve::NoCurve);
    dots->setSymbol(new QwtSymbol(QwtSymbol::Ellipse, colour, QPen(Qt::NoPen), QSize(4, 4)));
    dots->attach(plot);
    return dots;
}

QwtPlotPicker *makePicker(QwtPlot *plot) {
    auto *picker = new QwtPlotPicker(plot->canvas());
    picker->setStateMachine(new QwtPickerClickPointMachine);
    return picker;
}

}  // namespace

ResidualView::ResidualView(QWidget *parent)
    : CameraView(parent),
      summary(new QLabel(this)),
      scatter(new QwtPlot(this)),
      bars(new QwtPlot(this)),
      chart(new QwtPlotBarChart) {
    summary->setWordWrap(true);
    content()->addWidget(summary);
    content()->addWidget(scatter, 3);
    content()->addWidget(bars, 2);
    setUpPlot(*scatter, tr("Residual in x [px]"), tr("Residual in y [px]"));
    setUpPlot(*bars, tr("Photograph"), tr("rms [px]"));
    QColor blue(0, 130, 190, 150);
    used = makeDots(scatter, blue);
    unused = makeDots(scatter, residualColour());
    auto *bar = new QwtColumnSymbol(QwtColumnSymbol::Box);
    bar->setPalette(QPalette(QColor(0, 130, 190)));
    bar->setFrameStyle(QwtColumnSymbol::NoFrame);
    chart->setSymbol(bar);
    chart->setSpacing(2);
    chart->attach(bars);
    rescaler = new QwtPlotRescaler(scatter->canvas(), QwtPlot::xBottom, QwtPlotRescaler::Fitting);
    rescaler->setAspectRatio(1);
    rescaler->setExpandingDirection(QwtPlotRescaler::ExpandBoth);
    connect(makePicker(scatter), qOverload<const QPointF &>(&QwtPlotPicker::selected), this, &ResidualView::chooseDot);
    connect(makePicker(bars), qOverload<const QPointF &>(&QwtPlotPicker::selected), this, &ResidualView::chooseBar);
}

void ResidualView::collect(int camera) {
    const auto &observations = calibrated()->observations;
    QVector<QPointF> usedPoints;
    QVector<QPointF> unusedPoints;
    dots.clear();
    size_t seen = 0;
    const size_t step = size_t(calibrated()->cameras[size_t(camera)].corners) / mostDots + 1;
    for (size_t s = 0; s < observations.sightings.size(); ++s) {
        const calibration::Sighting &sighting = observations.sightings[s];
        if (observations.photographs[size_t(sighting.photograph)].camera != camera) {
            continue;
        }
        for (size_t c = 0; c < sighting.corners.size(); ++c) {
            const auto &estimated = result->estimated[s][c];
            if (!estimated || seen++ % step != 0) {
                continue;
            }
            const calibration::SeenCorner &corner = sighting.corners[c];
            const QPointF residual(corner.image.x() - estimated->x(), corner.image.y() - estimated->y());
            dots.push_back(
                {residual, {corner.image.x(), corner.image.y()}, result->photographIds[size_t(sighting.photograph)]});
            (sighting.isUsed && corner.isUsed ? usedPoints : unusedPoints).append(residual);
        }
    }
    used->setSamples(usedPoints);
    unused->setSamples(unusedPoints);
}

void ResidualView::showCamera(int camera) {
    scatter->setVisible(camera >= 0);
    bars->setVisible(camera >= 0);
    if (camera < 0) {
        summary->setText(whyNoCamera());
        return;
    }
    collect(camera);
    const auto &photographs = calibrated()->observations.photographs;
    QVector<QPointF> heights;  // x is the number of the photograph, from 1; y is its residual
    barIds.clear();
    for (size_t i = 0; i < photographs.size(); ++i) {
        const int id = result->photographIds[i];
        if (photographs[i].camera == camera) {
            barIds.push_back(id);
            heights.append(QPointF(heights.size() + 1, result->fits[id].rms.value_or(0)));
        }
    }
    chart->setSamples(heights);
    const double rms = calibrated()->cameras[size_t(camera)].rms;
    const double range = qMax(0.01, rangeInRms * rms);
    scatter->setAxisScale(QwtPlot::xBottom, -range, range);
    scatter->setAxisScale(QwtPlot::yLeft, range, -range);
    scatter->updateAxes();  // sets the directions of the axes, which the rescaler then keeps
    rescaler->setIntervalHint(QwtPlot::xBottom, {-range, range});
    rescaler->setIntervalHint(QwtPlot::yLeft, {-range, range});
    rescaler->rescale();
    bars->setAxisScale(QwtPlot::xBottom, 0.5, qMax(1, heights.size()) + 0.5);
    summary->setText(tr("%1 rms per corner. Click a point or a bar to open its photograph. Red: corners that the "
                        "calibration does not use.")
                         .arg(pixels(rms)));
    scatter->replot();
    bars->replot();
}

void ResidualView::chooseDot(QPointF place) {
    const auto distance = [this, place](const Dot &dot) {
        return QLineF(scatter->transform(QwtPlot::xBottom, place.x()), scatter->transform(QwtPlot::yLeft, place.y()),
                      scatter->transform(QwtPlot::xBottom, dot.residual.x()),
                      scatter->transform(QwtPlot::yLeft, dot.residual.y()))
            .length();
    };
    const auto nearest = std::min_element(
        dots.begin(), dots.end(), [&distance](const Dot &a, const Dot &b) { return distance(a) < distance(b); });
    if (nearest != dots.end() && distance(*nearest) < clickReach) {
        emit cornerChosen(nearest->photographId, nearest->pixel);
    }
}

void ResidualView::chooseBar(QPointF place) {
    const int bar = qRound(place.x()) - 1;
    if (bar >= 0 && bar < int(barIds.size())) {
        emit photographChosen(barIds[size_t(bar)]);
    }
}
