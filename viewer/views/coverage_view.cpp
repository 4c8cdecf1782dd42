#include "viewer/views/coverage_view.h"

#include <qwt_plot_curve.h>
#include <qwt_symbol.h>

#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

#include "viewer/views/drawing.h"
#include "viewer/views/picture_plot.h"

namespace {

constexpr int cellColumns = 12;
constexpr int cellRows = 9;
constexpr int mostDots = 20000;  // more dots would make the window slow without showing more

QwtPlotCurve *makeDots(QwtPlot *plot, const QColor &colour, int size) {
    auto *dots = new QwtPlotCurve;  // the plot owns it
    dots->setStyle(QwtPlotCurve::NoCurve);
    dots->setSymbol(new QwtSymbol(QwtSymbol::Ellipse, colour, QPen(Qt::NoPen), QSize(size, size)));
    dots->attach(plot);
    return dots;
}

QVector<QPointF> thinned(QVector<QPointF> points) {
    if (points.size() > mostDots) {
        const int step = points.size() / mostDots + 1;
        QVector<QPointF> some;
        for (int i = 0; i < points.size(); i += step) {
            some.append(points[i]);
        }
        return some;
    }
    return points;
}

int coveredCells(const QVector<QPointF> &points, const calibration::Camera &camera) {
    std::vector<bool> isCovered(size_t(cellColumns) * cellRows);
    for (const QPointF &point : points) {
        const int column = qBound(0, int(point.x() * cellColumns / camera.width), cellColumns - 1);
        const int row = qBound(0, int(point.y() * cellRows / camera.height), cellRows - 1);
        isCovered[size_t(row) * cellColumns + size_t(column)] = true;
    }
    return int(std::count(isCovered.begin(), isCovered.end(), true));
}

}  // namespace

CoverageView::CoverageView(QWidget *parent)
    : CameraView(parent), summary(new QLabel(this)), plot(new PicturePlot(this)) {
    summary->setWordWrap(true);
    content()->addWidget(summary);
    content()->addWidget(plot, 1);
    content()->addStretch();
    used = makeDots(plot, QColor(0, 130, 190), 3);
    unused = makeDots(plot, residualColour(), 5);
}

void CoverageView::showCamera(int camera) {
    plot->setVisible(camera >= 0);
    if (camera < 0) {
        summary->setText(whyNoCamera());
        return;
    }
    const auto &observations = calibrated()->observations;
    QVector<QPointF> usedPoints;
    QVector<QPointF> unusedPoints;
    for (const calibration::Sighting &sighting : observations.sightings) {
        if (observations.photographs[size_t(sighting.photograph)].camera != camera) {
            continue;
        }
        for (const calibration::SeenCorner &corner : sighting.corners) {
            (sighting.isUsed && corner.isUsed ? usedPoints : unusedPoints)
                .append(QPointF(corner.image.x(), corner.image.y()));
        }
    }
    const calibration::Camera &shown = observations.cameras[size_t(camera)];
    const int share = qRound(100.0 * coveredCells(usedPoints, shown) / (cellColumns * cellRows));
    summary->setText(
        tr("%1 corners, in %2 % of the picture. Where there are no corners, the calibration is a guess: hold "
           "a pattern there. Red: corners that the calibration does not use.")
            .arg(usedPoints.size())
            .arg(share));
    used->setSamples(thinned(usedPoints));
    unused->setSamples(thinned(unusedPoints));
    plot->setCamera(shown);
    plot->replot();
}
