#include "viewer/views/uncertainty_view.h"

#include <qwt_color_map.h>
#include <qwt_matrix_raster_data.h>
#include <qwt_plot_spectrogram.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>

#include <QComboBox>
#include <QLabel>
#include <QVBoxLayout>
#include <limits>

#include "viewer/views/drawing.h"
#include "viewer/views/picture_plot.h"

namespace {

constexpr double leastScale = 0.01;  // pixels; the top of the colour scale is at least this
constexpr double firstLine = 0.01;   // pixels; the value of the first contour line

// Larger uncertainty is darker, so that the colours can also be told apart in grey.
class UncertaintyColours : public QwtLinearColorMap {
public:
    UncertaintyColours() : QwtLinearColorMap(QColor(250, 250, 220), QColor(90, 10, 60)) {
        addColorStop(0.25, QColor(253, 205, 115));
        addColorStop(0.5, QColor(243, 125, 75));
        addColorStop(0.75, QColor(190, 45, 80));
    }
};

}  // namespace

UncertaintyView::UncertaintyView(QWidget *parent)
    : CameraView(parent),
      quantity(new QComboBox(this)),
      summary(new QLabel(this)),
      plot(new PicturePlot(this)),
      picture(new QwtPlotSpectrogram) {
    quantity->setAccessibleName(tr("Quantity"));
    quantity->addItems({tr("Uncertainty at the patterns' distance"), tr("Uncertainty far away"),
                        tr("Difference between two halves of the photographs")});
    summary->setWordWrap(true);
    content()->addWidget(quantity);
    content()->addWidget(summary);
    content()->addWidget(plot, 1);
    content()->addStretch();
    picture->attach(plot);
    picture->setColorMap(new UncertaintyColours);
    picture->setDisplayMode(QwtPlotSpectrogram::ContourMode, true);
    picture->setDefaultContourPen(QPen(QColor(40, 40, 40, 150), 1));
    plot->enableAxis(QwtPlot::yRight);
    plot->axisWidget(QwtPlot::yRight)->setColorBarEnabled(true);
    plot->axisWidget(QwtPlot::yRight)->setColorBarWidth(14);
    connect(quantity, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] { showCamera(shownCamera); });
}

const calibration::PictureMap *UncertaintyView::chosenMap(int camera) const {
    const calibration::CameraTrust &trust = calibrated()->cameras[size_t(camera)];
    switch (Quantity(quantity->currentIndex())) {
        case AtDistance:
            return &trust.uncertainty;
        case AtInfinity:
            return &trust.uncertaintyAtInfinity;
        case BetweenHalves:
            break;
    }
    return trust.halves ? &*trust.halves : nullptr;
}

void UncertaintyView::showMap(const calibration::PictureMap &map) {
    QVector<double> values;
    values.reserve(int(map.values.size()));
    for (const std::optional<double> &value : map.values) {
        values.append(value.value_or(std::numeric_limits<double>::quiet_NaN()));
    }
    const calibration::Camera &camera = calibrated()->observations.cameras[size_t(shownCamera)];
    const double top = qMax(leastScale, map.greatest().value_or(leastScale));
    auto *grid = new QwtMatrixRasterData;  // the spectrogram owns it
    grid->setValueMatrix(values, map.columns);
    grid->setInterval(Qt::XAxis, {0, double(camera.width)});
    grid->setInterval(Qt::YAxis, {0, double(camera.height)});
    grid->setInterval(Qt::ZAxis, {0, top});
    grid->setResampleMode(QwtMatrixRasterData::BilinearInterpolation);
    picture->setData(grid);
    QList<double> levels;
    double level = firstLine;
    while (level < top) {
        levels.append(level);
        level *= 2;
    }
    picture->setContourLevels(levels);
    QwtScaleWidget *scale = plot->axisWidget(QwtPlot::yRight);
    scale->setColorMap({0, top}, new UncertaintyColours);
    QwtText unit(tr("px"));
    unit.setFont(plot->font());
    scale->setTitle(unit);
    plot->setAxisScale(QwtPlot::yRight, 0, top);
    plot->setCamera(camera);
    plot->replot();
}

QString UncertaintyView::meaningOf(int camera, const QString &greatest) const {
    switch (Quantity(quantity->currentIndex())) {
        case AtDistance:
            return tr("Standard deviation of where a point at a distance of %1 mm is projected; at most %2.")
                .arg(qRound(calibrated()->cameras[size_t(camera)].distance))
                .arg(greatest);
        case AtInfinity:
            return tr("Standard deviation of where a point far away is projected; at most %1.").arg(greatest);
        case BetweenHalves:
            break;
    }
    return tr("How much the projection differs between two calibrations, each with one half of the photographs; at "
              "most %1.")
        .arg(greatest);
}

void UncertaintyView::showCamera(int camera) {
    shownCamera = camera;
    const calibration::PictureMap *map = camera < 0 ? nullptr : chosenMap(camera);
    const bool isThere = map != nullptr && map->columns > 0 && map->rows > 0;
    plot->setVisible(isThere);
    quantity->setVisible(camera >= 0);
    if (camera < 0) {
        summary->setText(whyNoCamera());
        return;
    }
    if (!isThere) {
        summary->setText(
            tr("One half of the photographs is not enough to calibrate this camera, so two halves cannot "
               "be compared."));
        return;
    }
    const double greatest = map->greatest().value_or(0);
    QString text = meaningOf(camera, pixels(greatest));
    if (greatest > firstLine) {
        text += " " + tr("The first contour line is at %1; each further line has twice the value of the line before.")
                          .arg(pixels(firstLine));
    }
    summary->setText(text);
    showMap(*map);
}
